// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/Desktop/QtMainThread.h"

#include "Platforms/Linux/Desktop/UnixClock.h"
#include "UnlockCore/Foundation/Fatal.h"
#include "UnlockCore/Foundation/Mutex.h"

#include <QCoreApplication>
#include <QEvent>
#include <QObject>
#include <QPointer>
#include <QSocketNotifier>
#include <QTimer>
#include <algorithm>
#include <compare>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <thread>
#include <utility>

#include <sys/timerfd.h>
#include <time.h>
#include <unistd.h>

namespace marrowby {
namespace {

constexpr std::int64_t nanosecondsPerSecond = 1'000'000'000;

/// Nanoseconds since the Unix epoch, clamped to 1970…2200.
std::int64_t unixNanoseconds(Date date) {
    constexpr double latest = 7'258'118'400;
    const double seconds = (date.time_since_epoch() + unixtime::toDateEpoch).count();
    // NaN counts as past. 0 would disarm the timer.
    if (!(seconds > 0)) return 1;
    // A double of today's dates resolves 0.25 microseconds; 1 is added so as not to fire early.
    return static_cast<std::int64_t>(std::min(seconds, latest) * double{nanosecondsPerSecond}) +
           1000;
}

std::int64_t unixNanosecondsNow() {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    return now.tv_sec * nanosecondsPerSecond + now.tv_nsec;
}

}  // namespace

/// Runs posted work. Its queue is our own, so that the thread sanitizer sees under its lock what is
/// handed over, which it does not in Qt's.
class QtMainThread::Receiver final : public QObject {
  public:
    const std::thread::id homeThread = std::this_thread::get_id();

    void post(std::function<void()> work) {
        {
            const MutexLock lock(mutex_);
            posted_.push_back(std::move(work));
        }
        // An event for each, so that Qt's other events keep their turns.
        QCoreApplication::postEvent(this, new QEvent(QEvent::User));
    }

  private:
    void customEvent(QEvent* /*event*/) override { takeFirst()(); }

    [[nodiscard]] std::function<void()> takeFirst() {
        const MutexLock lock(mutex_);
        auto work = std::move(posted_.front());
        posted_.pop_front();
        return work;
    }

    Mutex mutex_;
    std::deque<std::function<void()>> posted_ GUARDED_BY(mutex_);
};

/// All one-shot calls, over one wall-clock timerfd.
class QtMainThread::Alarms {
  public:
    struct Key {
        std::int64_t fireAt = 0;
        std::uint64_t number = 0;
        friend auto operator<=>(const Key&, const Key&) = default;
    };

    explicit Alarms(QObject& receiver)
        : descriptor_(timerfd_create(CLOCK_REALTIME, TFD_CLOEXEC | TFD_NONBLOCK)) {
        if (descriptor_ < 0) fatal("the system has no timer to give");
        notifier_ = new QSocketNotifier(descriptor_, QSocketNotifier::Read, &receiver);
        QObject::connect(notifier_, &QSocketNotifier::activated, notifier_, [this] { fire(); });
    }
    Alarms(const Alarms&) = delete;
    Alarms& operator=(const Alarms&) = delete;
    ~Alarms() {
        delete notifier_;
        ::close(descriptor_);
    }

    [[nodiscard]] Key add(Date fireDate, std::function<void()> work) {
        const Key key{unixNanoseconds(fireDate), ++lastNumber_};
        waiting_.emplace(key, std::move(work));
        arm();
        return key;
    }

    void remove(Key key) {
        if (waiting_.erase(key) != 0) arm();
    }

  private:
    void arm() const {
        itimerspec when{};
        if (!waiting_.empty()) {
            const std::int64_t fireAt = waiting_.begin()->first.fireAt;
            when.it_value = {.tv_sec = fireAt / nanosecondsPerSecond,
                             .tv_nsec = fireAt % nanosecondsPerSecond};
        }
        timerfd_settime(descriptor_, TFD_TIMER_ABSTIME, &when, nullptr);
    }

    void fire() {
        std::uint64_t expirations = 0;
        [[maybe_unused]] const auto size = ::read(descriptor_, &expirations, sizeof expirations);
        // Entries added by these calls run on the next turn, even if they are due.
        const std::uint64_t last = lastNumber_;
        const std::int64_t now = unixNanosecondsNow();
        while (const auto due = firstDue(now, last)) {
            const auto entry = waiting_.extract(*due);
            // Before the call, which may run a nested loop.
            arm();
            entry.mapped()();
        }
        arm();
    }

    [[nodiscard]] std::optional<Key> firstDue(std::int64_t now, std::uint64_t last) const {
        for (const auto& [key, work] : waiting_) {
            if (key.fireAt > now) break;
            if (key.number <= last) return key;
        }
        return std::nullopt;
    }

    int descriptor_;
    QSocketNotifier* notifier_ = nullptr;
    std::map<Key, std::function<void()>> waiting_;
    std::uint64_t lastNumber_ = 0;
};

class QtMainThread::AlarmTimer final : public Timer {
  public:
    AlarmTimer(const std::shared_ptr<Alarms>& alarms, Alarms::Key key)
        : alarms_(alarms), key_(key) {}
    AlarmTimer(const AlarmTimer&) = delete;
    AlarmTimer& operator=(const AlarmTimer&) = delete;
    ~AlarmTimer() override {
        if (const auto alarms = alarms_.lock()) alarms->remove(key_);
    }

  private:
    std::weak_ptr<Alarms> alarms_;
    Alarms::Key key_;
};

class QtMainThread::IntervalTimer final : public Timer {
  public:
    IntervalTimer(QObject& receiver, TimeInterval interval, TimeInterval tolerance,
                  std::function<void()> work)
        : timer_(new QTimer(&receiver)) {
        // Qt's coarse timers may be off by 5 %.
        timer_->setTimerType(tolerance * 20 < interval ? Qt::PreciseTimer : Qt::CoarseTimer);
        timer_->setInterval(std::chrono::ceil<std::chrono::milliseconds>(interval));
        QObject::connect(timer_, &QTimer::timeout, timer_, std::move(work));
        timer_->start();
    }
    IntervalTimer(const IntervalTimer&) = delete;
    IntervalTimer& operator=(const IntervalTimer&) = delete;
    ~IntervalTimer() override {
        if (!timer_) return;
        timer_->stop();
        timer_->disconnect();
        // deleteLater: its own callback may destroy this.
        timer_->deleteLater();
    }

  private:
    QPointer<QTimer> timer_;
};

QtMainThread::QtMainThread()
    : receiver_(std::make_unique<Receiver>()), alarms_(std::make_shared<Alarms>(*receiver_)) {}

QtMainThread::~QtMainThread() = default;

bool QtMainThread::isCurrent() const {
    return std::this_thread::get_id() == receiver_->homeThread;
}

void QtMainThread::post(std::function<void()> work) {
    receiver_->post(std::move(work));
}

// The tolerance is unused: a timerfd is exact.
std::unique_ptr<MainThread::Timer> QtMainThread::at(Date fireDate, TimeInterval /*tolerance*/,
                                                    std::function<void()> work) {
    return std::make_unique<AlarmTimer>(alarms_, alarms_->add(fireDate, std::move(work)));
}

std::unique_ptr<MainThread::Timer> QtMainThread::every(TimeInterval interval,
                                                       TimeInterval tolerance,
                                                       std::function<void()> work) {
    return std::make_unique<IntervalTimer>(*receiver_, interval, tolerance, std::move(work));
}

}  // namespace marrowby
