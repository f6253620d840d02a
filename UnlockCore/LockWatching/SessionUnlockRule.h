// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Foundation/Phrase.h"
#include "UnlockCore/Platform/SessionUnlocking.h"

#include <optional>
#include <string_view>

namespace marrowby {

/// When the desktop may be asked to open the lock. The hint alone proves little: any program of the
/// user may set it, so whatever looks unlike a locker is refused.
struct SessionUnlockRule {
    /// In order of precedence.
    enum class Refusal {
        forbidden,
        noSession,
        notLocked,
        foreignSession,
        notActive,
        noSeat,
        sleeping,
        noShell,
        foreignShell,
        lockNotSeen,
        hintUnsteady,
    };

    /// How long the hint must have been true without a break.
    static constexpr TimeInterval steadyTime{0.5};

    /// Nothing when it may be asked.
    [[nodiscard]] static std::optional<Refusal> refusal(const SessionUnlockFacts& facts);
};

/// As a sentence for the user.
[[nodiscard]] Phrase description(SessionUnlockRule::Refusal refusal);

}  // namespace marrowby
