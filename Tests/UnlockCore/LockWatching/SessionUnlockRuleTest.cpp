// SPDX-License-Identifier: Apache-2.0
#include "Tests/Fakes/FakeSessionUnlocking.h"
#include "UnlockCore/LockWatching/SessionUnlockRule.h"

#include <limits>
#include <string_view>

#include <gtest/gtest.h>

namespace marrowby {
namespace {

using Facts = SessionUnlockFacts;
using Shell = Facts::Shell;

TEST(SessionUnlockRule, asksNothingOfASessionThatOnlyLooksLocked) {
    const Facts locked = FakeSessionUnlocking().facts;
    EXPECT_EQ(SessionUnlockRule::refusal(locked), std::nullopt);
    using enum SessionUnlockRule::Refusal;
    const struct {
        const char* lie;
        SessionUnlockRule::Refusal refusal;
        void (*tell)(Facts&);
    } cases[] = {
        {"the policy came meanwhile", forbidden, [](Facts& f) { f.isForbidden = true; }},
        {"logind has gone", noSession, [](Facts& f) { f.isLocked.reset(); }},
        {"only a saver says so", notLocked, [](Facts& f) { f.isLocked = false; }},
        {"another user's session", foreignSession, [](Facts& f) { f.isOwn = false; }},
        {"switched away", notActive, [](Facts& f) { f.isActive = false; }},
        {"over the network", noSeat, [](Facts& f) { f.hasSeat = false; }},
        {"going to sleep", sleeping, [](Facts& f) { f.isGoingToSleep = true; }},
        {"nobody knows of sleep", sleeping, [](Facts& f) { f.isGoingToSleep.reset(); }},
        {"the shell crashed", noShell, [](Facts& f) { f.shell = Shell::none; }},
        {"somebody took its name", foreignShell, [](Facts& f) { f.shell = Shell::foreign; }},
        {"it was so from the start", lockNotSeen, [](Facts& f) { f.lockedFor.reset(); }},
        {"the hint flaps", hintUnsteady, [](Facts& f) { f.lockedFor = TimeInterval(0.49); }},
        {"no time at all", hintUnsteady,
         [](Facts& f) { f.lockedFor = TimeInterval(std::numeric_limits<double>::quiet_NaN()); }},
    };
    for (const auto& [lie, refusal, tell] : cases) {
        Facts facts = locked;
        tell(facts);
        EXPECT_EQ(SessionUnlockRule::refusal(facts), refusal) << lie;
        EXPECT_TRUE(inEnglish(description(refusal)).ends_with('.')) << lie;
    }
}

TEST(SessionUnlockRule, readsTheAdministratorsPolicy) {
    const struct {
        std::string_view policy;
        bool isForbidden;
    } cases[] = {
        {"", false},
        {"# ask-desktop-to-unlock = no\n", false},
        {"ask-desktop-to-unlock = yes", false},
        {"other = no\nask-desktop-to-unlock=no\n", true},
        {"  ask-desktop-to-unlock =\tno\r\n", true},
        {"ask-desktop-to-unlock = yes\nask-desktop-to-unlock = no", true},
        {"ask-desktop-to-unlock = never", true},
        {"ask-desktop-to-unlock", true},
    };
    for (const auto& [policy, isForbidden] : cases)
        EXPECT_EQ(isAskingForbiddenBy(policy), isForbidden) << policy;
}

TEST(LockOpeningTest, asksADesktopBeforeTypingAndNeverPastAPolicy) {
    for (const bool canType : {false, true}) {
        EXPECT_EQ(lockOpening(true, false, canType), LockOpening::asking);
        EXPECT_EQ(lockOpening(true, true, canType), LockOpening::forbidden);
    }
    EXPECT_EQ(lockOpening(false, true, true), LockOpening::typing);
    EXPECT_EQ(lockOpening(false, false, false), LockOpening::unsupported);
}

}  // namespace
}  // namespace marrowby
