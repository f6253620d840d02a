#pragma once

#include "UnlockCore/Platform/SystemClock.h"

#include <atomic>

namespace marrowby {

/// A clock that the rehearsal sets forward, so that a week passes in no time. Any thread.
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

}  // namespace marrowby
