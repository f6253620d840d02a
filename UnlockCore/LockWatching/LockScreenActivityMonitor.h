#pragma once

#include "UnlockCore/LockWatching/ActivityWatching.h"
#include "UnlockCore/LockWatching/IdleResetDetector.h"
#include "UnlockCore/LockWatching/InputActivity.h"
#include "UnlockCore/Platform/InputIdle.h"
#include "UnlockCore/Platform/MainThread.h"
#include "UnlockCore/Platform/SystemClock.h"

#include <functional>
#include <memory>

namespace marrowby {

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
