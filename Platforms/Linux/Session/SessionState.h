// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Platform/ScreenLock.h"

#include <optional>
#include <vector>

namespace marrowby {

enum class LockReading { unknown, unlocked, locked };

/// Readings of all sources at one moment.
struct SessionSources {
    /// Windows of known lockers on the X display.
    LockReading display = LockReading::unknown;
    /// logind's LockedHint.
    LockReading hint = LockReading::unknown;
    /// The hint has been seen to change. Desktops need not set it, so it proves nothing before.
    bool hintIsKept = false;
    LockReading saver = LockReading::unknown;
    /// From logind or, if it does not say, from the X display.
    std::optional<bool> isActive{};
    std::optional<bool> isDisplayOnConsole{};
    /// The X server or the desktop has switched them off.
    bool areDisplaysAsleep = false;
    std::optional<bool> isPreparingForSleep{};
    friend bool operator==(const SessionSources&, const SessionSources&) = default;
};

struct SessionState {
    LockReading lock = LockReading::unknown;
    LockReading saver = LockReading::unknown;
    std::optional<bool> isOnConsole{};
    /// The computer, or its displays.
    bool isAsleep = false;
    friend bool operator==(const SessionState&, const SessionState&) = default;

    /// Precedence: locker window, maintained LockedHint, screen saver. No window proves nothing:
    /// not all lockers are known.
    [[nodiscard]] static SessionState of(const SessionSources& sources);
};

/// An event, and the new sleep state if it changes.
struct SessionChange {
    LockEvent event;
    std::optional<bool> isSleeping;
    friend bool operator==(const SessionChange&, const SessionChange&) = default;
};

/// The events between two states, in order: wake, lock, sleep. Unknown counts as unlocked, on the
/// console and awake, so losing a source while locked counts as an unlock. Switching to another
/// session counts as display sleep; sleep ends when no source reports any.
[[nodiscard]] std::vector<SessionChange> changes(const SessionState& before,
                                                 const SessionState& now);

}  // namespace marrowby
