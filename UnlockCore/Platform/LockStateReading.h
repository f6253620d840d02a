#pragma once

#include <optional>

namespace marrowby {

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
