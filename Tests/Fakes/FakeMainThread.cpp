#include "Tests/Fakes/FakeMainThread.h"

#include <algorithm>
#include <utility>

namespace marrowby {

struct FakeMainThread::Entry {
    Scheduled scheduled;
    std::function<void()> work;
    [[nodiscard]] Date dueAt(TimeInterval lateness) const {
        return scheduled.fireDate + std::min(lateness, scheduled.tolerance);
    }
};

class FakeMainThread::Token final : public Timer {
  public:
    using Entries = std::vector<std::shared_ptr<Entry>>;
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

FakeMainThread::FakeMainThread(Date start)
    : now_(start.time_since_epoch().count()),
      entries_(std::make_shared<std::vector<std::shared_ptr<Entry>>>()) {}

FakeMainThread::~FakeMainThread() = default;

bool FakeMainThread::isCurrent() const {
    return std::this_thread::get_id() == owner_;
}

void FakeMainThread::post(std::function<void()> work) {
    if (hasEnded_) return;
    const MutexLock lock(mutex_);
    posted_.push_back(std::move(work));
}

std::unique_ptr<MainThread::Timer> FakeMainThread::schedule(Scheduled scheduled,
                                                            std::function<void()> work) {
    auto entry = std::make_shared<Entry>(scheduled, std::move(work));
    entries_->push_back(entry);
    return std::make_unique<Token>(entries_, std::move(entry));
}

std::unique_ptr<MainThread::Timer> FakeMainThread::at(Date fireDate, TimeInterval tolerance,
                                                      std::function<void()> work) {
    return schedule({fireDate, tolerance, std::nullopt}, std::move(work));
}

std::unique_ptr<MainThread::Timer> FakeMainThread::every(TimeInterval interval,
                                                         TimeInterval tolerance,
                                                         std::function<void()> work) {
    return schedule({now() + interval, tolerance, interval}, std::move(work));
}

Date FakeMainThread::now() const {
    return Date(TimeInterval(now_.load()));
}

void FakeMainThread::runPosted() {
    while (true) {
        std::function<void()> work;
        {
            const MutexLock lock(mutex_);
            if (posted_.empty()) return;
            work = std::move(posted_.front());
            posted_.pop_front();
        }
        work();
    }
}

std::shared_ptr<FakeMainThread::Entry> FakeMainThread::nextDue(Date until) const {
    std::shared_ptr<Entry> next;
    for (const auto& entry : *entries_) {
        if (entry->dueAt(lateness_) > until) continue;
        if (!next || entry->dueAt(lateness_) < next->dueAt(lateness_)) next = entry;
    }
    return next;
}

void FakeMainThread::advance(TimeInterval interval) {
    const Date end = now() + interval;
    runPosted();
    while (const auto entry = nextDue(end)) {
        setNow(std::max(now(), entry->dueAt(lateness_)));
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

void FakeMainThread::jump(TimeInterval offset) {
    setNow(now() + offset);
}

std::vector<FakeMainThread::Scheduled> FakeMainThread::timers() const {
    std::vector<Scheduled> timers;
    timers.reserve(entries_->size());
    for (const auto& entry : *entries_)
        timers.push_back(entry->scheduled);
    std::ranges::sort(timers, {}, &Scheduled::fireDate);
    return timers;
}

}  // namespace marrowby
