// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Foundation/Time.h"
#include "UnlockCore/Platform/InputIdle.h"
#include "UnlockCore/Platform/MainThread.h"
#include "UnlockCore/Platform/SystemClock.h"

#include <functional>
#include <memory>
#include <optional>

namespace marrowby {

/// Somebody touched the keyboard, the mouse or the trackpad.
struct InputActivity {
    Date at;
    /// How long there had been no input before this one.
    TimeInterval quietFor{};

    friend bool operator==(const InputActivity&, const InputActivity&) = default;
};

/// Watches for input of any kind. Main thread. start() and stop() are idempotent.
class ActivityWatching {
  public:
    virtual ~ActivityWatching() = default;
    virtual void start() = 0;
    virtual void stop() = 0;
};

/// Detects new input by the system uptime at which it happened.
struct IdleResetDetector {
    /// A change of the last input's time by no more than this is not a new input.
    TimeInterval tolerance{0.05};
    /// Nothing until the first input is seen.
    std::optional<TimeInterval> lastEventUptime;

    /// The gap between the input seen before and this one, when this one is new. The first only
    /// calibrates.
    [[nodiscard]] std::optional<TimeInterval> see(TimeInterval inputUptime);
};

/// Polls the idle time while it is started and reports each fresh input. Main thread. The services
/// outlive it.
class LockScreenActivityMonitor final : public ActivityWatching {
  public:
    LockScreenActivityMonitor(const InputIdle& inputIdle, MainThread& mainThread,
                              const SystemClock& clock, TimeInterval interval = TimeInterval(0.3));

    /// May stop or destroy the monitor.
    std::function<void(const InputActivity&)> onActivity;

    void start() override;
    void stop() override;

  private:
    void poll();

    const InputIdle& inputIdle_;
    MainThread& mainThread_;
    const SystemClock& clock_;
    const TimeInterval interval_;
    IdleResetDetector detector_;
    std::unique_ptr<MainThread::Timer> timer_;
};

}  // namespace marrowby
