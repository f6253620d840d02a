#pragma once

#include "UnlockCore/Engine/FaceScanning.h"
#include "UnlockCore/Engine/PasswordTyping.h"
#include "UnlockCore/Engine/UnlockMachine.h"
#include "UnlockCore/Engine/UnlockReadiness.h"
#include "UnlockCore/LockWatching/LockScreenActivityMonitor.h"
#include "UnlockCore/LockWatching/SpaceKeyMonitor.h"
#include "UnlockCore/Platform/ScreenLock.h"

#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <thread>

namespace marrowby {

namespace unlockcoordinator {

/// Shows the machine's phases on the island above the lock screen. Main thread.
class Presenting {
  public:
    virtual ~Presenting() = default;
    virtual void show(const OverlayPhase& phase) = 0;
};

/// A scheduled call. Main thread; destroying it cancels it too.
class TimerToken {
  public:
    virtual ~TimerToken() = default;
    virtual void cancel() = 0;
};

/// The wall clock. Main thread.
class Clock {
  public:
    virtual ~Clock() = default;
    [[nodiscard]] virtual Date now() const = 0;
    /// Calls once, at `date` or soon after, never while this runs.
    [[nodiscard]] virtual std::unique_ptr<TimerToken> schedule(Date date,
                                                               std::function<void()> work) = 0;
};

}  // namespace unlockcoordinator

/// Owns the machine and is its only door to the world: takes each event with a snapshot, carries
/// out the effects in order and keeps the one timer for the next deadline. Main thread; events that
/// an effect causes are handled after the current one.
class UnlockCoordinator {
  public:
    using Presenting = unlockcoordinator::Presenting;
    using TimerToken = unlockcoordinator::TimerToken;
    using Clock = unlockcoordinator::Clock;
    using Event = UnlockMachine::Event;

    /// The references must outlive the coordinator.
    struct Collaborators {
        /// Outlives what is typed, too: a typing under way still asks it on its own thread.
        const LockStateReading& lockState;
        FaceScanning& scanner;
        PasswordTyping& typer;
        /// May be null.
        Presenting* presenter = nullptr;
        SpaceKeyListening& spaceKeys;
        ActivityWatching& activity;
        Clock& clock;
        std::function<UnlockReadiness()> readiness;
    };

    /// Set before the first event; each may be empty.
    struct Callbacks {
        std::function<void(const PasswordHealth&)> onHealthChange;
        std::function<void()> onAskToUpdatePassword;
        std::function<void(const LogLine&)> onLog;
        /// After every handled event.
        std::function<void()> onChange;
    };

    UnlockCoordinator(PasswordHealth health, Collaborators collaborators);
    UnlockCoordinator(const UnlockCoordinator&) = delete;
    UnlockCoordinator& operator=(const UnlockCoordinator&) = delete;
    ~UnlockCoordinator() = default;

    void setCallbacks(Callbacks callbacks) { callbacks_ = std::move(callbacks); }
    /// Whether the displays sleep; counts from the next event on.
    void setSleeping(bool isSleeping) { isSleeping_ = isSleeping; }
    /// For a password saved anew: typing is trusted as far as `health` says from now on.
    void replacePasswordHealth(PasswordHealth health);

    void send(Event event);

    [[nodiscard]] const UnlockMachine& machine() const { return machine_; }

  private:
    struct Performer;

    void handle(Event event);
    void rescheduleTimer();
    [[nodiscard]] UnlockSnapshot snapshot(const UnlockReadiness& readiness) const;
    void startLook(LookID look, const ScanConfiguration& configuration);
    void typePassword();
    [[nodiscard]] bool isOnOwnThread() const { return std::this_thread::get_id() == thread_; }

    UnlockMachine machine_;
    Collaborators collaborators_;
    Callbacks callbacks_;
    bool isSleeping_ = false;
    std::unique_ptr<TimerToken> timer_;
    std::deque<Event> queue_;
    bool isHandling_ = false;
    std::thread::id thread_ = std::this_thread::get_id();
    /// What callbacks hold weakly. Goes first.
    std::shared_ptr<UnlockCoordinator> self_{this, [](UnlockCoordinator*) {}};
};

}  // namespace marrowby
