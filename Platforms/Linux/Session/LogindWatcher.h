#pragma once

#include "Platforms/Linux/Session/SessionState.h"
#include "UnlockCore/Foundation/Mutex.h"
#include "UnlockCore/Platform/MainThread.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace marrowby {

/// What logind says about the user's session and about sleep, on the system bus. Main thread, under
/// Qt's event loop; the main thread outlives it. While there is no bus, no logind or no session of
/// ours, all is unknown; it follows them when they come back. It holds sleep up until what was
/// announced of it is handled.
class LogindWatcher {
  public:
    struct State {
        LockReading hint = LockReading::unknown;
        /// Somebody has been seen to set the hint since this logind started.
        bool hintIsKept = false;
        std::optional<bool> isActive;
        std::optional<bool> isPreparingForSleep;
        friend bool operator==(const State&, const State&) = default;
    };

    LogindWatcher(std::string busAddress, MainThread& mainThread);
    ~LogindWatcher();
    LogindWatcher(const LogindWatcher&) = delete;
    LogindWatcher& operator=(const LogindWatcher&) = delete;

    /// After each change of the state; must not destroy the watcher.
    std::function<void()> onChange;

    /// Once.
    void start();

    /// Any thread.
    [[nodiscard]] State state() const;

  private:
    class Conversation;

    void set(const State& state);

    mutable Mutex mutex_;
    State state_ GUARDED_BY(mutex_);
    std::unique_ptr<Conversation> conversation_;
};

}  // namespace marrowby
