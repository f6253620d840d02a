#pragma once

#include "UnlockCore/Foundation/Mutex.h"
#include "UnlockCore/Platform/InputIdle.h"
#include "UnlockCore/Platform/LockStateReading.h"
#include "UnlockCore/Platform/SpaceKeys.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace marrowby {

/// An X display that may come and go, with the lock of the session behind it, the sleep of its
/// monitors, its idle time and its Space keys. While it is away nothing is known of the lock, there
/// is no idle time, and no key is heard; who listened goes on when it is back. It is looked for
/// ever more rarely, at last twice a minute. Main thread, under Qt's event loop; state(),
/// areMonitorsAsleep() and systemUptime() from any.
class X11Display final : public LockStateReading, public InputIdle, public SpaceKeys {
  public:
    struct Callbacks {
        /// A locker came or went, the monitors fell asleep or woke, or the display came or went.
        std::function<void()> onChange;
        /// With a sentence for the user, whenever it is gone or was not there at the start.
        std::function<void(const std::string&)> onAway;
    };

    explicit X11Display(std::string name);
    ~X11Display() override;
    X11Display(const X11Display&) = delete;
    X11Display& operator=(const X11Display&) = delete;

    /// Once. The callbacks come later than this returns, but for the first onAway.
    void start(Callbacks callbacks);

    [[nodiscard]] LockState state() const override;
    /// False on a lost display.
    [[nodiscard]] bool areMonitorsAsleep() const { return areMonitorsAsleep_; }
    [[nodiscard]] TimeInterval secondsSinceLastInput() const override;
    [[nodiscard]] std::optional<std::uint64_t> registryIdleNanoseconds() const override;
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

    const std::string name_;
    Callbacks callbacks_;
    std::unique_ptr<Retry> retry_;
    std::vector<std::weak_ptr<Listener>> listeners_;
    std::unique_ptr<Parts> parts_;
    std::atomic<bool> areMonitorsAsleep_ = false;
    mutable Mutex mutex_;
    std::shared_ptr<const LockStateReading> lock_ GUARDED_BY(mutex_);
};

}  // namespace marrowby
