// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Platform/MainThread.h"
#include "UnlockCore/Platform/SystemClock.h"

#include <atomic>
#include <functional>
#include <memory>
#include <set>
#include <utility>

namespace marrowby {

/// A clock that can be set forward. Any thread.
class MovedClock final : public SystemClock {
  public:
    /// `real` outlives this.
    explicit MovedClock(const SystemClock& real) : real_(real) {}

    [[nodiscard]] Date now() const override { return real_.now() + ahead(); }
    [[nodiscard]] TimeInterval ahead() const { return TimeInterval(ahead_.load()); }
    void move(TimeInterval by) { ahead_ = ahead_ + by.count(); }

  private:
    const SystemClock& real_;
    /// Seconds; set by one thread only.
    std::atomic<double> ahead_ = 0;
};

/// A main thread whose timers follow a MovedClock. Both outlive this, and this outlives its timers.
class MovedMainThread final : public MainThread {
  public:
    MovedMainThread(std::unique_ptr<MainThread> real, const MovedClock& clock)
        : real_(std::move(real)), clock_(clock) {}

    /// Call after moving the clock: due timers fire soon, repeating ones once.
    void clockMoved();

    [[nodiscard]] bool isCurrent() const override { return real_->isCurrent(); }
    void post(std::function<void()> work) override { real_->post(std::move(work)); }
    [[nodiscard]] std::unique_ptr<Timer> at(Date fireDate, TimeInterval tolerance,
                                            std::function<void()> work) override;
    [[nodiscard]] std::unique_ptr<Timer> every(TimeInterval interval, TimeInterval tolerance,
                                               std::function<void()> work) override;

  private:
    class Moved;
    class Once;
    class Repeated;

    const std::unique_ptr<MainThread> real_;
    const MovedClock& clock_;
    std::set<Moved*> timers_;
};

}  // namespace marrowby
