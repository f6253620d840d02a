// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Foundation/Phrase.h"

#include <functional>
#include <optional>
#include <string_view>

namespace marrowby {

/// A change of the screen lock or of the displays' sleep.
enum class LockEvent { screenLocked, screenUnlocked, willSleep, wake };

/// What a session tells of its screen locker.
struct SessionLocker {
    /// One runs or has announced itself, though it may not have locked yet.
    bool isPresent = true;
    /// Name of the one that holds the screen, if no password is typed into it.
    std::string_view untyped{};
    friend bool operator==(const SessionLocker&, const SessionLocker&) = default;
};

/// Reports lock events. Main thread. start() and stop() are idempotent.
class LockEventWatching {
  public:
    virtual ~LockEventWatching() = default;

    /// Not called before start() has returned, nor after stop(). May destroy the watcher.
    std::function<void(LockEvent)> onEvent;

    /// Between willSleep and wake, as reported so far.
    [[nodiscard]] virtual bool isSleeping() const = 0;
    /// Read afresh.
    [[nodiscard]] virtual SessionLocker locker() const { return {}; }
    /// What keeps locks from being noticed now, as a sentence for the user; empty if nothing does.
    [[nodiscard]] virtual Phrase problem() const { return {}; }
    virtual void start() = 0;
    virtual void stop() = 0;
};

/// The login session at one moment; absent values are unknown.
struct LockState {
    std::optional<bool> isScreenLocked;
    /// In front, not switched away.
    std::optional<bool> isOnConsole;
    friend bool operator==(const LockState&, const LockState&) = default;

    /// Unknown counts as not locked, and so does a session off the console.
    [[nodiscard]] bool isLocked() const {
        return isScreenLocked.value_or(false) && isOnConsole.value_or(true);
    }
};

/// Reads the lock of the user's session, afresh each time. Any thread.
class LockStateReading {
  public:
    virtual ~LockStateReading() = default;
    [[nodiscard]] virtual LockState state() const = 0;
    [[nodiscard]] bool isLocked() const { return state().isLocked(); }
};

}  // namespace marrowby
