// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Platforms/macOS/Rules/LoginSession.h"
#include "UnlockCore/Platform/ScreenLock.h"

#include <optional>
#include <string>

namespace marrowby {

/// The lock state in a login session's dictionary; `nullopt` means no session.
struct UnlockLockState {
    /// A flag that is not a Boolean is unknown.
    [[nodiscard]] static LockState of(const std::optional<SessionDictionary>& session);
    /// The Boolean values as text; `nullopt` without a session. Numbers and strings are left out:
    /// they may identify the user.
    [[nodiscard]] static std::optional<std::string> inWords(
        const std::optional<SessionDictionary>& session);
};

}  // namespace marrowby
