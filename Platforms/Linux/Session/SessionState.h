#pragma once

#include "UnlockCore/Platform/LockEvent.h"

#include <optional>
#include <vector>

namespace marrowby {

enum class LockReading { unknown, unlocked, locked };

/// What each source says about the user's login session at one moment.
struct SessionSources {
    /// Windows of known lockers on the X display.
    LockReading display = LockReading::unknown;
    /// The session's LockedHint.
    LockReading hint = LockReading::unknown;
    /// Somebody has been seen to set the hint; nobody has to, and until then it is false.
    bool hintIsKept = false;
    /// The session bus's screen savers.
    LockReading saver = LockReading::unknown;
    /// What logind and, where it is silent, the display say about who has the screen.
    std::optional<bool> isActive{};
    std::optional<bool> isDisplayOnConsole{};
    /// The X server has blanked its monitors.
    bool areDisplaysAsleep = false;
    std::optional<bool> isPreparingForSleep{};
    friend bool operator==(const SessionSources&, const SessionSources&) = default;
};

/// What is true of the session in the light of all sources.
struct SessionState {
    LockReading lock = LockReading::unknown;
    LockReading saver = LockReading::unknown;
    std::optional<bool> isOnConsole{};
    /// The computer, or its displays.
    bool isAsleep = false;
    friend bool operator==(const SessionState&, const SessionState&) = default;

    /// The firmest source that has something to say wins: a locker's window on the display, then a
    /// hint that is kept, then a screen saver that is on. No locker in sight outranks nobody: not
    /// all are known.
    [[nodiscard]] static SessionState of(const SessionSources& sources);
};

/// An event to tell of, and what it says about the displays' sleep, if anything.
struct SessionChange {
    LockEvent event;
    std::optional<bool> isSleeping;
    friend bool operator==(const SessionChange&, const SessionChange&) = default;
};

/// What is to be told, in order: coming back, the lock, going away. Unknown counts as unlocked, on
/// the console and awake, so that a source that is lost while locked is told as an unlock. A
/// session that another one takes the screen from sees its displays sleep; sleep is over once no
/// source knows of any.
[[nodiscard]] std::vector<SessionChange> changes(const SessionState& before,
                                                 const SessionState& now);

}  // namespace marrowby
