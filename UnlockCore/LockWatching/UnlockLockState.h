#pragma once

#include "UnlockCore/Platform/LoginSession.h"

#include <optional>

namespace marrowby {

/// What a login session's dictionary says about the lock. Nothing stands for no session.
struct UnlockLockState {
    /// In doubt about the lock: not locked. A session that is known to be off the console is not
    /// locked either.
    [[nodiscard]] static bool isLocked(const std::optional<SessionDictionary>& session);
    /// Nothing where it is unknown.
    [[nodiscard]] static std::optional<bool> isOnConsole(
        const std::optional<SessionDictionary>& session);
};

}  // namespace marrowby
