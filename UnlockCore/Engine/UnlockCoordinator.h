// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Engine/FaceScanning.h"
#include "UnlockCore/Engine/PasswordTyping.h"
#include "UnlockCore/Engine/UnlockMachine.h"
#include "UnlockCore/Engine/UnlockReadiness.h"
#include "UnlockCore/Engine/UnlockRoad.h"
#include "UnlockCore/Foundation/WeakSelf.h"
#include "UnlockCore/LockWatching/LockScreenActivityMonitor.h"
#include "UnlockCore/LockWatching/SpaceKeyMonitor.h"
#include "UnlockCore/Platform/ScreenLock.h"
#include "UnlockCore/Platform/WindowServer.h"

#include <deque>
#include <functional>
#include <memory>
#include <optional>
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

/// Owns the machine: gives it each event with a snapshot, carries out the effects in order and
/// keeps the timer for the next deadline. Main thread; events that an effect causes are handled
/// after the current one.
///
/// The lock and the readiness are read anew for every event that has effects and for every event
/// but camera frames. A frame without effects uses the last reading, up to `longestReadingAge` old.
class UnlockCoordinator {
  public:
    using Presenting = unlockcoordinator::Presenting;
    using TimerToken = unlockcoordinator::TimerToken;
    using Clock = unlockcoordinator::Clock;
    using Event = UnlockMachine::Event;

    /// So late at most a scan notices an unlock for which no lock event came.
    static constexpr TimeInterval longestReadingAge{0.5};

    /// The references must outlive the coordinator.
    struct Collaborators {
        /// Also asked by a typing under way, on its own thread.
        const LockStateReading& lockState;
        FaceScanning& scanner;
        PasswordTyping& typer;
        /// May be null.
        Presenting* presenter = nullptr;
        SpaceKeyListening& spaceKeys;
        ActivityWatching& activity;
        Clock& clock;
        /// Must be cheap. Send Event::SettingsChanged after a change.
        std::function<UnlockReadiness()> readiness;
        /// Asked at the start of a scan; empty: unknown.
        std::function<ActiveDisplays()> activeDisplays{};
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
    /// Whether the displays sleep; used from the next event on.
    void setSleeping(bool isSleeping) { isSleeping_ = isSleeping; }
    /// After the password was saved anew.
    void replacePasswordHealth(PasswordHealth health);

    void send(Event event);

    [[nodiscard]] const UnlockMachine& machine() const { return machine_; }

  private:
    struct Performer;

    /// The facts of a snapshot that had to be asked for.
    struct Reading {
        UnlockReadiness readiness;
        bool hasFace = false;
        bool isLocked = false;
        Date at;
    };
    struct Deadline {
        Date at;
        std::unique_ptr<TimerToken> timer;
    };

    void handle(Event event);
    /// The steps that an event tells of; the last ends the road.
    void note(const Event& event, UnlockRoad& road, Date now);
    void rescheduleTimer();
    [[nodiscard]] Reading read(Date now) const;
    [[nodiscard]] bool isReadingRecent(Date now) const;
    [[nodiscard]] UnlockSnapshot snapshot(Date now) const;
    void startScan(ScanID scan, Date now);
    /// For another thread.
    [[nodiscard]] std::function<bool()> stillLocked() const;
    void typePassword();
    [[nodiscard]] bool isOnOwnThread() const { return std::this_thread::get_id() == thread_; }

    UnlockMachine machine_;
    Collaborators collaborators_;
    Callbacks callbacks_;
    bool isSleeping_ = false;
    Reading reading_;
    /// None once the timer has fired.
    std::optional<Deadline> deadline_;
    /// Of the scan and typing under way.
    std::optional<UnlockRoad> road_;
    std::deque<Event> queue_;
    bool isHandling_ = false;
    std::thread::id thread_ = std::this_thread::get_id();
    WeakSelf<UnlockCoordinator> weakSelf_{this};
};

}  // namespace marrowby
