// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/Session/LinuxLockMonitor.h"

#include <utility>

namespace marrowby {
namespace {

LockReading lockReading(std::optional<bool> isLocked) {
    if (!isLocked) return LockReading::unknown;
    return *isLocked ? LockReading::locked : LockReading::unlocked;
}

}  // namespace

LinuxLockMonitor::LinuxLockMonitor(const LogindWatcher& logind, const ScreenSaverWatcher& savers,
                                   const X11Display* display, MainThread& mainThread)
    : logind_(logind), savers_(savers), display_(display), mainThread_(mainThread) {}

void LinuxLockMonitor::start() {
    if (!run_) run_ = std::make_shared<Run>();
}

void LinuxLockMonitor::stop() {
    run_.reset();
}

SessionState LinuxLockMonitor::sessionState() const {
    const LogindWatcher::State logind = logind_.state();
    const LockState display = display_ != nullptr ? display_->state() : LockState{};
    return SessionState::of({
        .display = lockReading(display.isScreenLocked),
        .hint = logind.hint,
        .hintIsKept = logind.hintIsKept,
        .saver = savers_.reading(),
        .isActive = logind.isActive,
        .isDisplayOnConsole = display.isOnConsole,
        .areDisplaysAsleep =
            display_ != nullptr ? display_->areMonitorsAsleep() : areDesktopDisplaysAsleep_.load(),
        .isPreparingForSleep = logind.isPreparingForSleep,
    });
}

LockState LinuxLockMonitor::state() const {
    const SessionState session = sessionState();
    LockState state{.isScreenLocked = {}, .isOnConsole = session.isOnConsole};
    if (session.lock != LockReading::unknown)
        state.isScreenLocked = session.lock == LockReading::locked;
    return state;
}

SessionLocker LinuxLockMonitor::locker() const {
    SessionLocker locker =
        display_ != nullptr ? display_->locker() : SessionLocker{.isPresent = false};
    locker.isPresent |= savers_.reading() != LockReading::unknown || logind_.state().hintIsKept;
    // A script, so that its executable is Python's.
    if (savers_.activeSaver() == "org.cinnamon.ScreenSaver")
        locker.untyped = "cinnamon-screensaver";
    return locker;
}

Phrase LinuxLockMonitor::problem() const {
    if (!savers_.isBusLost()) return {};
    return Phrase(
        "The session bus is gone. Until it is back, the keyring can’t be reached, and a lock that "
        "is only announced there isn’t noticed.");
}

void LinuxLockMonitor::noteDisplays(bool areAsleep) {
    areDesktopDisplaysAsleep_ = areAsleep;
    update();
}

void LinuxLockMonitor::update() {
    const SessionState now = sessionState();
    for (const SessionChange& change : changes(std::exchange(session_, now), now)) {
        mainThread_.post([this, change, weak = std::weak_ptr(run_)] {
            const auto run = weak.lock();
            if (!run) return;
            if (change.isSleeping) run->isSleeping = *change.isSleeping;
            // Copy: the callback may destroy this object.
            if (const auto report = onEvent) report(change.event);
        });
    }
}

}  // namespace marrowby
