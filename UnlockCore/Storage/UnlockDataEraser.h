// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Storage/CredentialStore.h"
#include "UnlockCore/Storage/FaceStore.h"
#include "UnlockCore/Storage/Vault.h"

#include <string>
#include <vector>

namespace marrowby {

/// Removes everything that was saved: the faces, the password and, once both are gone, the key.
/// Main thread.
class UnlockDataEraser {
  public:
    struct Report {
        bool removedFaces = false;
        bool removedPassword = false;
        bool removedKey = false;
        /// One line for each step that failed, in their order.
        std::vector<std::string> problems;
        friend bool operator==(const Report&, const Report&) = default;
    };

    /// Locks the vault, except where the key alone couldn't be deleted.
    [[nodiscard]] static Report erase(FaceStore& faces, CredentialStore& credentials, Vault& vault,
                                      const PlatformWords& words);
};

}  // namespace marrowby
