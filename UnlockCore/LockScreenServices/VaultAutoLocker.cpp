// SPDX-License-Identifier: Apache-2.0
#include "UnlockCore/LockScreenServices/VaultAutoLocker.h"

#include <utility>

namespace marrowby {

namespace {

constexpr TimeInterval checkInterval(300);
constexpr TimeInterval checkTolerance(30);

}  // namespace

VaultAutoLocker::VaultAutoLocker(Vault& vault, std::function<std::optional<TimeInterval>()> limit,
                                 MainThread& mainThread, SystemClock& clock)
    : vault_(vault), limit_(std::move(limit)), mainThread_(mainThread), clock_(clock) {}

void VaultAutoLocker::start() {
    if (timer_) return;
    timer_ = mainThread_.every(checkInterval, checkTolerance, [this] { check(clock_.now()); });
    check(clock_.now());
}

void VaultAutoLocker::stop() {
    timer_.reset();
}

void VaultAutoLocker::check(Date now) {
    if (!vault_.isUnlocked()) return;
    const std::optional<Date> lastActivityAt = vault_.lastActivityAt();
    const std::optional<TimeInterval> limit = limit_();
    if (lastActivityAt && limit && now - *lastActivityAt >= *limit) vault_.lock();
}

}  // namespace marrowby
