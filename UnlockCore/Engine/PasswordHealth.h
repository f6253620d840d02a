// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

namespace marrowby {

/// How often the lock screen turned the stored password down, and what follows.
struct PasswordHealth {
    /// How many typed passwords in a row were turned down.
    std::int64_t failures = 0;
    /// Nothing is typed until the password is saved again.
    bool suspended = false;
    /// The user is to be asked to update the password at the next unlock.
    bool needsNotice = false;

    friend bool operator==(const PasswordHealth&, const PasswordHealth&) = default;
};

}  // namespace marrowby
