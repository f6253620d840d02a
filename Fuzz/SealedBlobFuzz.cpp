// SPDX-License-Identifier: Apache-2.0

// The input as the whole of a sealed file, and as what is sealed.

#include "Fuzz/FuzzVault.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>

namespace marrowby {
namespace {

constexpr std::size_t overhead = 1 + AuthenticatedCipher::nonceSize + AuthenticatedCipher::tagSize;

struct Fuzz : FuzzVault {
    /// A blob opens for at most one purpose, and fails with the right error.
    void open(std::span<const std::uint8_t> blob) {
        int opened = 0;
        for (const auto purpose : {VaultPurpose::faces, VaultPurpose::password}) {
            const auto plaintext = vault->open(blob, purpose);
            if (plaintext) {
                ++opened;
                require(plaintext->size() + overhead == blob.size(), "it opened to another size");
            } else {
                const bool isForeign = !blob.empty() && blob[0] != 1;
                require(plaintext.error() ==
                            (isForeign ? VaultError::unknownFormat : VaultError::openFailed),
                        "it failed for another reason");
            }
        }
        require(opened <= 1, "it opened for both purposes");
    }

    /// A sealed blob opens again, and not after one bit was flipped.
    void seal(std::span<const std::uint8_t> plaintext) {
        auto blob = vault->seal(plaintext, VaultPurpose::faces);
        require(blob && blob->size() == plaintext.size() + overhead, "it wasn’t sealed");
        const auto opened = vault->open(*blob, VaultPurpose::faces);
        require(opened && std::ranges::equal(opened->values(), plaintext), "it didn’t open");
        // Chosen by the input.
        std::size_t bit = 0;
        for (const std::uint8_t byte : plaintext.first(std::min<std::size_t>(4, plaintext.size())))
            bit = bit * 256 + byte;
        bit %= blob->size() * 8;
        (*blob)[bit / 8] ^= static_cast<std::uint8_t>(1U << bit % 8);
        require(!vault->open(*blob, VaultPurpose::faces), "it opened although it was changed");
    }
};

}  // namespace
}  // namespace marrowby

// NOLINTNEXTLINE(readability-identifier-naming): libFuzzer's name.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static marrowby::Fuzz fuzz;
    fuzz.open({data, size});
    fuzz.seal({data, size});
    return 0;
}
