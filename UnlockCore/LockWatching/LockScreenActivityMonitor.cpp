// SPDX-License-Identifier: Apache-2.0
#include "UnlockCore/LockWatching/LockScreenActivityMonitor.h"

#include <optional>

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
    const std::optional<TimeInterval> idle = inputIdle_.sinceLastInput();
    if (!idle) return;
    const auto gap = detector_.see(inputIdle_.systemUptime() - *idle);
    if (!gap) return;
    // Copied: the callback may destroy this monitor.
    if (const auto report = onActivity) report({.at = clock_.now() - *idle, .quietFor = *gap});
}

}  // namespace marrowby
