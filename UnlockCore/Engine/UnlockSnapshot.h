// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Foundation/Time.h"
#include "UnlockCore/LockWatching/UnlockTrigger.h"
#include "UnlockCore/Platform/SessionUnlocking.h"

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
    LockOpening opening = LockOpening::typing;
    /// Or, where the desktop is asked, the user allowed that.
    bool passwordSaved = false;
    bool hasFace = false;
    /// This process may post keystrokes or, where the desktop is asked, ask it.
    bool accessibilityTrusted = false;
    /// This process may watch the Space key.
    bool spaceKeyAccess = false;

    friend bool operator==(const UnlockSnapshot&, const UnlockSnapshot&) = default;
};

}  // namespace marrowby
