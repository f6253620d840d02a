// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/Session/SessionState.h"

#include <vector>

#include <gtest/gtest.h>

namespace marrowby {
namespace {

using enum LockReading;

TEST(SessionState, ranksTheSources) {
    struct Case {
        SessionSources sources;
        LockReading lock;
        const char* why;
    };
    const Case cases[] = {
        {{}, unknown, "nobody was asked yet"},
        {{.display = locked, .hint = unlocked, .hintIsKept = true, .saver = unlocked},
         locked,
         "a locker without a hint covers the screen"},
        {{.display = unlocked, .hint = locked, .saver = unlocked},
         locked,
         "an unknown locker, with a hint"},
        {{.hint = unlocked, .hintIsKept = true, .saver = locked},
         unlocked,
         "the saver blanks without a lock"},
        {{.display = unlocked, .hint = unlocked, .saver = locked},
         locked,
         "the desktop has never set the hint"},
        {{.hint = unknown, .hintIsKept = true, .saver = locked}, locked, "logind is gone"},
        {{.hint = unlocked}, unlocked, "only logind answers"},
        {{.display = unlocked}, unlocked, "only the display answers"},
        {{.saver = unlocked}, unlocked, "only the saver answers"},
    };
    for (const Case& each : cases)
        EXPECT_EQ(SessionState::of(each.sources).lock, each.lock) << each.why;
}

TEST(SessionState, asksTheDisplayAboutTheConsoleWithoutLogind) {
    EXPECT_EQ(SessionState::of({}).isOnConsole, std::nullopt);
    EXPECT_EQ(SessionState::of({.isDisplayOnConsole = false}).isOnConsole, false);
    EXPECT_EQ(SessionState::of({.isActive = false, .isDisplayOnConsole = true}).isOnConsole, false);
    EXPECT_EQ(SessionState::of({.isActive = true, .isDisplayOnConsole = false}).isOnConsole, true);
}

TEST(SessionState, reportsChangesAsEvents) {
    const SessionChange isLocked{LockEvent::screenLocked, {}};
    const SessionChange isUnlocked{LockEvent::screenUnlocked, {}};
    const SessionChange saverStopped{LockEvent::wake, {}};
    const SessionChange sleeps{LockEvent::willSleep, true};
    const SessionChange wakes{LockEvent::wake, false};
    const SessionState away{.isOnConsole = false};
    const SessionState here{.isOnConsole = true};

    struct Case {
        SessionState before;
        SessionState now;
        std::vector<SessionChange> events;
    };
    const Case cases[] = {
        {{}, {}, {}},
        {{}, {.lock = unlocked, .saver = unlocked, .isOnConsole = true}, {}},
        {{}, {.lock = locked}, {isLocked}},
        {{.lock = unlocked}, {.lock = locked}, {isLocked}},
        {{.lock = locked}, {.lock = unlocked}, {isUnlocked}},
        {{.lock = locked}, {}, {isUnlocked}},
        {{.lock = locked, .saver = locked},
         {.lock = unlocked, .saver = unlocked},
         {isUnlocked, saverStopped}},
        {{.lock = locked, .saver = locked}, {.lock = locked, .saver = unlocked}, {saverStopped}},
        {{.saver = locked}, {}, {}},
        {{}, {.isAsleep = true}, {sleeps}},
        {{.isAsleep = true}, {}, {wakes}},
        {{}, {.lock = locked, .isAsleep = true}, {isLocked, sleeps}},
        {{.isAsleep = true}, {.lock = locked}, {wakes, isLocked}},
        {here, away, {sleeps}},
        {{}, away, {sleeps}},
        {away, here, {wakes}},
        {away, {}, {wakes}},
        {{}, here, {}},
        {away, {.lock = locked, .isOnConsole = true}, {wakes, isLocked}},
        // Two sources of sleep, one after the other: one sleep.
        {{.isAsleep = true}, {.isOnConsole = false, .isAsleep = true}, {}},
        {{.isOnConsole = false, .isAsleep = true}, away, {}},
    };
    for (const Case& each : cases)
        EXPECT_EQ(changes(each.before, each.now), each.events) << "case " << &each - cases;
}

}  // namespace
}  // namespace marrowby
