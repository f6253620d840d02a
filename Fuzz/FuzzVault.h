// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Tests/Fakes/VaultFixture.h"
#include "UnlockCore/Foundation/Fatal.h"

#include <cstdint>
#include <span>
#include <vector>

namespace marrowby {

/// An open vault whose key is always 0, 1, 2, … 31, as the seeds were sealed.
struct FuzzVault : VaultFixture {
    FuzzVault() {
        std::vector<std::uint8_t> key(AuthenticatedCipher::keySize);
        for (std::size_t i = 0; i < key.size(); ++i)
            key[i] = static_cast<std::uint8_t>(i);
        keyStore.key = key;
        require(unlock() == std::expected<void, StorageError>(), "the vault doesn’t open");
    }

    static void require(bool isSo, const char* otherwise) {
        if (!isSo) fatal(otherwise);
    }
};

}  // namespace marrowby
