// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/Session/SessionState.h"

#include <algorithm>

namespace marrowby {
namespace {

LockReading lockOf(const SessionSources& sources) {
    using enum LockReading;
    if (sources.display == locked || sources.hint == locked) return locked;
    // A saver may be active without a lock, so a maintained hint overrides it.
    if (sources.hint == unlocked && sources.hintIsKept) return unlocked;
    // Otherwise any source that reports a lock is right.
    return std::max({sources.saver, sources.hint, sources.display});
}

}  // namespace

SessionState SessionState::of(const SessionSources& sources) {
    return {
        .lock = lockOf(sources),
        .saver = sources.saver,
        .isOnConsole = sources.isActive ? sources.isActive : sources.isDisplayOnConsole,
        .isAsleep = sources.isPreparingForSleep.value_or(false) || sources.areDisplaysAsleep,
    };
}

std::vector<SessionChange> changes(const SessionState& before, const SessionState& now) {
    const auto isDark = [](const SessionState& state) {
        return state.isAsleep || state.isOnConsole == false;
    };
    const auto isLocked = [](const SessionState& state) {
        return state.lock == LockReading::locked;
    };
    constexpr SessionChange wokeUp{LockEvent::wake, false};
    constexpr SessionChange fellAsleep{LockEvent::willSleep, true};

    std::vector<SessionChange> list;
    if (isDark(before) && !isDark(now)) list.push_back(wokeUp);

    if (!isLocked(before) && isLocked(now)) list.push_back({LockEvent::screenLocked, {}});
    if (isLocked(before) && !isLocked(now)) list.push_back({LockEvent::screenUnlocked, {}});
    if (before.saver == LockReading::locked && now.saver == LockReading::unlocked)
        list.push_back({LockEvent::wake, {}});

    if (!isDark(before) && isDark(now)) list.push_back(fellAsleep);
    return list;
}

}  // namespace marrowby
