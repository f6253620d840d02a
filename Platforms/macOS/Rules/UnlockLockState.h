#pragma once

#include "Platforms/macOS/Rules/LoginSession.h"
#include "UnlockCore/Platform/LockStateReading.h"

#include <optional>
#include <string>

namespace marrowby {

/// What a login session's dictionary says about the lock. Nothing stands for no session.
struct UnlockLockState {
    /// A flag that is no Boolean is unknown.
    [[nodiscard]] static LockState of(const std::optional<SessionDictionary>& session);
    /// All that it says, in words; nothing where there is no session. Numbers and texts may tell
    /// who sits there: only truth values are said.
    [[nodiscard]] static std::optional<std::string> inWords(
        const std::optional<SessionDictionary>& session);
};

}  // namespace marrowby
