// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Foundation/Time.h"
#include "UnlockCore/LockWatching/UnlockTrigger.h"

namespace marrowby {

/// The world at the instant of an event.
struct UnlockSnapshot {
    Date now;
    bool isLocked = false;
    /// The displays are asleep.
    bool isSleeping = false;
    bool isEnabled = false;
    UnlockTriggers triggers;
    /// The island's animation is wanted.
    bool showsUI = false;
    /// How long one scan may last.
    TimeInterval scanDuration{};
    bool vaultUnlocked = false;
    bool passwordSaved = false;
    bool hasFace = false;
    /// This process may post keystrokes.
    bool accessibilityTrusted = false;
    /// This process may watch the Space key.
    bool spaceKeyAccess = false;

    friend bool operator==(const UnlockSnapshot&, const UnlockSnapshot&) = default;
};

}  // namespace marrowby
