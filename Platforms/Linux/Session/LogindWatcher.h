// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Platforms/Linux/Session/SessionState.h"
#include "UnlockCore/Foundation/Mutex.h"
#include "UnlockCore/Foundation/Time.h"
#include "UnlockCore/Platform/MainThread.h"

#include <expected>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace marrowby {

/// The session's lock hint and activity, and sleep, from logind on the system bus. All unknown
/// while bus, logind or session are missing; recovers when they return. Delays sleep until its
/// events are handled. Main thread, under Qt's event loop; the main thread outlives it.
class LogindWatcher {
  public:
    struct State {
        LockReading hint = LockReading::unknown;
        /// The hint has changed since logind started, so the desktop maintains it.
        bool hintIsKept = false;
        /// Uptime at which the hint turned true by its own signal; nothing where it is not true or
        /// that was not seen.
        std::optional<TimeInterval> lockedSince;
        std::optional<bool> isActive;
        /// The session is this user's, and at a seat.
        bool isOwn = false;
        bool hasSeat = false;
        std::optional<bool> isPreparingForSleep;
        friend bool operator==(const State&, const State&) = default;
    };

    LogindWatcher(std::string busAddress, MainThread& mainThread);
    ~LogindWatcher();
    LogindWatcher(const LogindWatcher&) = delete;
    LogindWatcher& operator=(const LogindWatcher&) = delete;

    /// After each change of the state; must not destroy the watcher.
    std::function<void()> onChange;

    /// Call once.
    void start();

    /// Any thread.
    [[nodiscard]] State state() const;

    // Callbacks come at most once, later, and not where logind or the bus has gone.

    /// Whether a session is being watched.
    [[nodiscard]] bool hasSession() const;
    /// Reads the session and sleep anew; all signals before the reply count. Without a session it
    /// is unknown.
    void read(std::function<void(const State&)> onRead);
    /// Asks logind to unlock the session. The error is logind's text.
    void unlock(std::function<void(const std::expected<void, std::string>&)> onAnswer);
    /// Asks logind to lock the session.
    void lock();

  private:
    class Connection;

    void set(const State& state);

    mutable Mutex mutex_;
    State state_ GUARDED_BY(mutex_);
    std::unique_ptr<Connection> connection_;
};

}  // namespace marrowby
