// SPDX-License-Identifier: Apache-2.0
#include "UnlockCore/Foundation/UUID.h"

#include <cstddef>

namespace marrowby {

namespace {

constexpr std::string_view digits = "0123456789ABCDEF";
constexpr std::size_t writtenLength = 36;

constexpr bool isDash(std::size_t position) {
    return position == 8 || position == 13 || position == 18 || position == 23;
}

constexpr int hexValue(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    return -1;
}

}  // namespace

UUID UUID::fromRandomBytes(std::array<std::uint8_t, 16> random) {
    random[6] = static_cast<std::uint8_t>((random[6] & 0x0F) | 0x40);
    random[8] = static_cast<std::uint8_t>((random[8] & 0x3F) | 0x80);
    return {random};
}

std::optional<UUID> UUID::parse(std::string_view text) {
    if (text.size() != writtenLength) return std::nullopt;
    UUID result;
    std::size_t nibble = 0;
    for (std::size_t i = 0; i < writtenLength; ++i) {
        if (isDash(i)) {
            if (text[i] != '-') return std::nullopt;
            continue;
        }
        const int value = hexValue(text[i]);
        if (value < 0) return std::nullopt;
        auto& byte = result.bytes.at(nibble / 2);
        byte = static_cast<std::uint8_t>(byte << 4 | value);
        ++nibble;
    }
    return result;
}

std::string UUID::string() const {
    std::string text;
    text.reserve(writtenLength);
    for (const std::uint8_t byte : bytes) {
        if (isDash(text.size())) text += '-';
        text += digits[byte >> 4];
        text += digits[byte & 0x0F];
    }
    return text;
}

}  // namespace marrowby
