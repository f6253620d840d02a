// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <span>
#include <vector>

namespace marrowby {

// What is looked for is never written down: neither the compiler nor the search may leave a copy.

inline constexpr std::uint8_t mask = 0x5a;
inline constexpr std::size_t passwordSize = 24;
inline volatile std::size_t step = 7;

inline std::uint8_t passwordByte(std::size_t index) {
    return static_cast<std::uint8_t>('a' + (index * step + 3) % 26);
}

struct Needle {
    std::size_t size;
    std::function<std::uint8_t(std::size_t)> at;

    [[nodiscard]] std::size_t countIn(std::span<const std::uint8_t> bytes,
                                      std::size_t starts) const {
        std::size_t count = 0;
        const std::uint8_t first = at(0);
        for (std::size_t i = 0; i < starts && i + size <= bytes.size(); ++i) {
            const void* found = std::memchr(&bytes[i], first, bytes.size() - i);
            if (found == nullptr) break;
            i = static_cast<std::size_t>(static_cast<const std::uint8_t*>(found) - bytes.data());
            std::size_t same = 1;
            while (same < size && i + same < bytes.size() && bytes[i + same] == at(same))
                ++same;
            count += same == size && i < starts ? 1 : 0;
        }
        return count;
    }
};

inline const Needle thePassword{passwordSize, &passwordByte};
inline const Needle thePasswordAsUTF16{
    2 * passwordSize,
    [](std::size_t i) { return i % 2 == 0 ? passwordByte(i / 2) : std::uint8_t{0}; }};
/// Proof that the search finds what is there.
inline const Needle theControl{
    passwordSize, [](std::size_t i) { return static_cast<std::uint8_t>(passwordByte(i) - 32); }};

inline Needle keyNeedle(const std::vector<std::uint8_t>& masked) {
    return {masked.size(),
            [masked](std::size_t i) { return static_cast<std::uint8_t>(masked[i] ^ mask); }};
}

inline std::vector<std::uint8_t> contentOf(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace marrowby
