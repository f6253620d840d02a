#pragma once

#include "UnlockCore/Foundation/Mutex.h"
#include "UnlockCore/Platform/MainThread.h"
#include "UnlockCore/Platform/SystemClock.h"

#include <atomic>
#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <thread>
#include <vector>

namespace marrowby {

/// A main thread and its wall clock under virtual time: nothing runs but inside advance() and
/// runPosted(), on the thread that made it. post() and now() may be called from any thread.
class FakeMainThread final : public MainThread, public SystemClock {
  public:
    explicit FakeMainThread(Date start = Date(TimeInterval(700'000'000)));
    ~FakeMainThread() override;

    [[nodiscard]] bool isCurrent() const override;
    void post(std::function<void()> work) override;
    [[nodiscard]] std::unique_ptr<Timer> at(Date fireDate, TimeInterval tolerance,
                                            std::function<void()> work) override;
    [[nodiscard]] std::unique_ptr<Timer> every(TimeInterval interval, TimeInterval tolerance,
                                               std::function<void()> work) override;
    [[nodiscard]] Date now() const override;

    /// Runs what was posted, and what that posts, without moving the time or firing timers.
    void runPosted();
    /// Moves the time on, firing timers in the order of their dates, each followed by what was
    /// posted.
    void advance(TimeInterval interval);
    /// Sets the clock as its user would: in either direction, without firing anything. Repeating
    /// timers do not notice.
    void jump(TimeInterval offset);
    /// How late every timer fires, as far as its own tolerance allows; none by default.
    void setLateness(TimeInterval lateness) { lateness_ = lateness; }
    /// Makes every posted piece of work from now on vanish, as after the end of the loop.
    void end() { hasEnded_ = true; }

    struct Scheduled {
        Date fireDate;
        TimeInterval tolerance{};
        /// Set for a repeating timer.
        std::optional<TimeInterval> interval;
        friend bool operator==(const Scheduled&, const Scheduled&) = default;
    };
    /// The living timers, by date.
    [[nodiscard]] std::vector<Scheduled> timers() const;

  private:
    struct Entry;
    class Token;

    [[nodiscard]] std::unique_ptr<Timer> schedule(Scheduled scheduled, std::function<void()> work);
    [[nodiscard]] std::shared_ptr<Entry> nextDue(Date until) const;
    void setNow(Date date) { now_.store(date.time_since_epoch().count()); }

    const std::thread::id owner_ = std::this_thread::get_id();
    std::atomic<double> now_;
    std::atomic<bool> hasEnded_ = false;
    TimeInterval lateness_{};
    mutable Mutex mutex_;
    std::deque<std::function<void()>> posted_ GUARDED_BY(mutex_);
    // In the order of creation, which decides between equal dates.
    std::shared_ptr<std::vector<std::shared_ptr<Entry>>> entries_;
};

}  // namespace marrowby
