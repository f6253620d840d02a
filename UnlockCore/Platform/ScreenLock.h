#pragma once

#include <functional>
#include <optional>

namespace marrowby {

/// What happened to the screen lock, or to the sleep of the displays.
enum class LockEvent { screenLocked, screenUnlocked, willSleep, wake };

/// Tells of the screen's lock and of the displays' sleep. Main thread. Starting twice and stopping
/// twice are harmless.
class LockEventWatching {
  public:
    virtual ~LockEventWatching() = default;

    /// Never called before start() has returned, nor after stop(). May destroy the watcher.
    std::function<void(LockEvent)> onEvent;

    /// From the displays' sleep to their wake, as told so far.
    [[nodiscard]] virtual bool isSleeping() const = 0;
    virtual void start() = 0;
    virtual void stop() = 0;
};

/// What is known of the login session at one moment; nothing stands for the unknown.
struct LockState {
    std::optional<bool> isScreenLocked;
    /// Shown to who sits at the computer, not switched away.
    std::optional<bool> isOnConsole;
    friend bool operator==(const LockState&, const LockState&) = default;

    /// In doubt about the lock: not locked. A session that is known to be off the console is not
    /// locked either.
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
