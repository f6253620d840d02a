// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Foundation/Mutex.h"
#include "UnlockCore/Platform/InputIdle.h"
#include "UnlockCore/Platform/ScreenLock.h"
#include "UnlockCore/Platform/SpaceKeys.h"

#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace marrowby {

class X11LockState;

/// A reconnecting X display: lock state, monitor sleep, idle time and Space keys. While it is away
/// the lock is unknown, the idle time is NaN and no keys are reported; listeners resume when it is
/// back. Retries with growing delays, at most 30 s. Main thread, under Qt's event loop; state(),
/// locker(), areMonitorsAsleep() and systemUptime() from any thread.
class X11Display final : public LockStateReading, public InputIdle, public SpaceKeys {
  public:
    struct Callbacks {
        /// A locker or the display came or went, or the monitors fell asleep or woke.
        std::function<void()> onChange;
        /// Called with a sentence for the user when the display is missing at the start or lost.
        std::function<void(const std::string&)> onAway;
    };

    explicit X11Display(std::string name);
    ~X11Display() override;
    X11Display(const X11Display&) = delete;
    X11Display& operator=(const X11Display&) = delete;

    /// Call once. All callbacks come later, except a first onAway.
    void start(Callbacks callbacks);

    [[nodiscard]] LockState state() const override;
    [[nodiscard]] SessionLocker locker() const;
    /// False on a lost display.
    [[nodiscard]] bool areMonitorsAsleep() const { return areMonitorsAsleep_; }
    [[nodiscard]] std::optional<TimeInterval> sinceLastInput() const override;
    [[nodiscard]] TimeInterval systemUptime() const override;
    [[nodiscard]] bool hasListenAccess() const override;
    [[nodiscard]] std::unique_ptr<Listening> listen(std::function<void(Press)> onPress) override;

  private:
    struct Parts;
    struct Listener;
    class Handle;
    class Retry;

    void connect();
    void lose(const std::string& sentence);
    void noteChange();
    void noteSleep();
    [[nodiscard]] std::shared_ptr<const X11LockState> lockReading() const;

    const std::string name_;
    Callbacks callbacks_;
    std::unique_ptr<Retry> retry_;
    std::vector<std::weak_ptr<Listener>> listeners_;
    std::unique_ptr<Parts> parts_;
    std::atomic<bool> areMonitorsAsleep_ = false;
    mutable Mutex mutex_;
    std::shared_ptr<const X11LockState> lock_ GUARDED_BY(mutex_);
};

}  // namespace marrowby
