#include "UnlockCore/LockWatching/LockScreenActivityMonitor.h"

#include <cstdint>
#include <optional>
#include <ratio>

namespace marrowby {

std::optional<TimeInterval> IdleResetDetector::see(TimeInterval inputUptime) {
    if (!lastEventUptime) {
        lastEventUptime = inputUptime;
        return std::nullopt;
    }
    const TimeInterval gap = inputUptime - *lastEventUptime;
    if (!(gap > tolerance)) return std::nullopt;
    lastEventUptime = inputUptime;
    return gap;
}

namespace {

/// Before any input the event system reports more than this.
constexpr TimeInterval idleLimit{100'000'000};

std::optional<TimeInterval> idleTime(const InputIdle& inputIdle) {
    // NaN fails both comparisons.
    const TimeInterval idle = inputIdle.secondsSinceLastInput();
    if (idle >= TimeInterval::zero() && idle < idleLimit) return idle;

    const std::optional<std::uint64_t> registered = inputIdle.registryIdleNanoseconds();
    if (!registered) return std::nullopt;
    return std::chrono::duration<double, std::nano>(static_cast<double>(*registered));
}

}  // namespace

LockScreenActivityMonitor::LockScreenActivityMonitor(const InputIdle& inputIdle,
                                                     MainThread& mainThread,
                                                     const SystemClock& clock,
                                                     TimeInterval interval)
    : inputIdle_(inputIdle), mainThread_(mainThread), clock_(clock), interval_(interval) {}

void LockScreenActivityMonitor::start() {
    if (timer_) return;
    detector_.lastEventUptime.reset();
    poll();
    timer_ = mainThread_.every(interval_, interval_ / 3, [this] { poll(); });
}

void LockScreenActivityMonitor::stop() {
    timer_.reset();
    detector_.lastEventUptime.reset();
}

void LockScreenActivityMonitor::poll() {
    const std::optional<TimeInterval> idle = idleTime(inputIdle_);
    if (!idle) return;
    const auto gap = detector_.see(inputIdle_.systemUptime() - *idle);
    if (!gap) return;
    // Copied: the callback may destroy this monitor.
    if (const auto report = onActivity) report({.at = clock_.now() - *idle, .quietFor = *gap});
}

}  // namespace marrowby
