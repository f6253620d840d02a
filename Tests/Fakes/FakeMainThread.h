// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Foundation/Mutex.h"
#include "UnlockCore/Platform/MainThread.h"
#include "UnlockCore/Platform/SystemClock.h"

#include <algorithm>
#include <atomic>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <thread>
#include <utility>
#include <vector>

namespace marrowby {

/// A main thread and its wall clock under virtual time: nothing runs but inside advance() and
/// runPosted(), on the thread that made it. post() and now() may be called from any thread.
class FakeMainThread final : public MainThread, public SystemClock {
  public:
    [[nodiscard]] bool isCurrent() const override { return std::this_thread::get_id() == owner_; }
    void post(std::function<void()> work) override {
        const MutexLock lock(mutex_);
        posted_.push_back(std::move(work));
    }
    [[nodiscard]] std::unique_ptr<Timer> at(Date fireDate, TimeInterval tolerance,
                                            std::function<void()> work) override {
        return schedule({fireDate, tolerance, std::nullopt}, std::move(work));
    }
    [[nodiscard]] std::unique_ptr<Timer> every(TimeInterval interval, TimeInterval tolerance,
                                               std::function<void()> work) override {
        return schedule({now() + interval, tolerance, interval}, std::move(work));
    }
    [[nodiscard]] Date now() const override { return Date(TimeInterval(now_.load())); }

    /// Runs what was posted, and what that posts, without moving the time or firing timers.
    void runPosted() {
        while (const auto work = nextPosted())
            work();
    }
    /// Advances the time, firing timers in the order of their dates, each followed by what was
    /// posted.
    void advance(TimeInterval interval) {
        const Date end = now() + interval;
        runPosted();
        while (const auto entry = nextDue(end)) {
            setNow(std::max(now(), entry->scheduled.fireDate));
            // The call may destroy its own timer.
            const std::function<void()> work = entry->work;
            if (const auto repeat = entry->scheduled.interval) {
                entry->scheduled.fireDate += *repeat;
            } else {
                std::erase(*entries_, entry);
            }
            work();
            runPosted();
        }
        setNow(std::max(now(), end));
    }
    /// Sets the clock as its user would: in either direction, without firing anything. Repeating
    /// timers do not notice.
    void jump(TimeInterval offset) { setNow(now() + offset); }

    struct Scheduled {
        Date fireDate;
        TimeInterval tolerance{};
        /// Set for a repeating timer.
        std::optional<TimeInterval> interval;
        friend bool operator==(const Scheduled&, const Scheduled&) = default;
    };
    /// The living timers, by date.
    [[nodiscard]] std::vector<Scheduled> timers() const {
        std::vector<Scheduled> timers;
        for (const auto& entry : *entries_)
            timers.push_back(entry->scheduled);
        std::ranges::sort(timers, {}, &Scheduled::fireDate);
        return timers;
    }

  private:
    struct Entry {
        Scheduled scheduled;
        std::function<void()> work;
    };
    using Entries = std::vector<std::shared_ptr<Entry>>;

    class Token final : public Timer {
      public:
        Token(std::weak_ptr<Entries> entries, std::shared_ptr<Entry> entry)
            : entries_(std::move(entries)), entry_(std::move(entry)) {}
        Token(const Token&) = delete;
        Token& operator=(const Token&) = delete;
        ~Token() override {
            if (const auto entries = entries_.lock()) std::erase(*entries, entry_);
        }

      private:
        std::weak_ptr<Entries> entries_;
        std::shared_ptr<Entry> entry_;
    };

    [[nodiscard]] std::unique_ptr<Timer> schedule(Scheduled scheduled, std::function<void()> work) {
        auto entry = std::make_shared<Entry>(scheduled, std::move(work));
        entries_->push_back(entry);
        return std::make_unique<Token>(entries_, std::move(entry));
    }
    [[nodiscard]] std::shared_ptr<Entry> nextDue(Date until) const {
        std::shared_ptr<Entry> next;
        for (const auto& entry : *entries_) {
            const Date date = entry->scheduled.fireDate;
            if (date <= until && (!next || date < next->scheduled.fireDate)) next = entry;
        }
        return next;
    }
    [[nodiscard]] std::function<void()> nextPosted() {
        const MutexLock lock(mutex_);
        if (posted_.empty()) return {};
        auto work = std::move(posted_.front());
        posted_.pop_front();
        return work;
    }
    void setNow(Date date) { now_.store(date.time_since_epoch().count()); }

    const std::thread::id owner_ = std::this_thread::get_id();
    std::atomic<double> now_ = 700'000'000;
    mutable Mutex mutex_;
    std::deque<std::function<void()>> posted_ GUARDED_BY(mutex_);
    // In the order of creation, which decides between equal dates.
    std::shared_ptr<Entries> entries_ = std::make_shared<Entries>();
};

}  // namespace marrowby
