#include "UnlockCore/LockWatching/UnlockGate.h"
#include "UnlockCore/LockWatching/UnlockTriggerPolicy.h"

#include <gtest/gtest.h>

namespace marrowby {
namespace {

constexpr TimeInterval seconds(double count) {
    return TimeInterval(count);
}
const Date noon{seconds(43'200)};

TEST(UnlockGate, theFirstUnmetConditionRefuses) {
    struct Row {
        bool UnlockConditions::* condition;
        const char* refusal;
    };
    const Row rows[] = {
        {&UnlockConditions::isEnabled, "off"},
        {&UnlockConditions::vaultUnlocked, "vaultLocked"},
        {&UnlockConditions::passwordSaved, "noPassword"},
        {&UnlockConditions::passwordTrusted, "passwordRejected"},
        {&UnlockConditions::screenLocked, "notLocked"},
        {&UnlockConditions::accessibilityTrusted, "noAccessibility"},
        {&UnlockConditions::faceMatched, "noMatch"},
        {&UnlockConditions::livenessConfirmed, "notLive"},
    };
    // From nothing met, meeting one after the other; each alone unmet gives the same refusal.
    UnlockConditions growing;
    for (const Row& row : rows) {
        UnlockConditions lacking{true, true, true, true, true, true, true, true};
        lacking.*row.condition = false;
        for (const UnlockConditions& conditions : {growing, lacking}) {
            const auto decision = UnlockGate::decide(conditions);
            const auto* refuse = std::get_if<UnlockGate::Decision::Refuse>(&decision);
            ASSERT_NE(refuse, nullptr) << row.refusal;
            EXPECT_EQ(rawValue(refuse->refusal), row.refusal);
        }
        growing.*row.condition = true;
    }
    EXPECT_EQ(UnlockGate::decide(growing), UnlockGate::Decision(UnlockGate::Decision::Type{}));
}

TEST(UnlockTriggerPolicy, activityIsRefusedInOrder) {
    struct Row {
        UnlockTriggers triggers;
        bool isLocked;
        TimeInterval sinceFence;
        TimeInterval quietFor;
        std::optional<std::string_view> refusal;
    };
    const UnlockTriggers onReturn{UnlockTrigger::onReturn};
    const Row rows[] = {
        {{}, false, seconds(0), seconds(0), "coming back isn’t chosen"},
        {{UnlockTrigger::onSpace}, true, seconds(9), seconds(9), "coming back isn’t chosen"},
        {onReturn, false, seconds(9), seconds(9), "not locked"},
        {onReturn, true, seconds(1.99), seconds(0), "too soon after the lock or the last look"},
        {onReturn, true, seconds(-3600), seconds(9), "too soon after the lock or the last look"},
        {onReturn, true, seconds(2), seconds(0.99), "no quiet moment before it"},
        {onReturn, true, seconds(2), seconds(1), std::nullopt},
    };
    for (const Row& row : rows) {
        UnlockTriggerPolicy policy{.triggers = row.triggers};
        if (row.isLocked) policy.screenLocked(noon, false);
        EXPECT_EQ(policy.activityRefusal(noon + row.sinceFence, row.quietFor), row.refusal);
    }
}

TEST(UnlockTriggerPolicy, wakesAreDebounced) {
    UnlockTriggerPolicy policy;
    policy.screenLocked(noon, false);
    EXPECT_FALSE(policy.acceptWake(noon + seconds(1.9))) << "the jostle of locking";
    policy.willSleep();
    EXPECT_TRUE(policy.acceptWake(noon + seconds(1.9)));
    EXPECT_EQ(policy.fence, noon + seconds(1.9));
    EXPECT_EQ(policy.lockedAt, noon);
    EXPECT_FALSE(policy.acceptWake(noon + seconds(3.8)));
    EXPECT_TRUE(policy.acceptWake(noon + seconds(3.9)));

    policy.foundUnlocked();
    EXPECT_FALSE(policy.lockedAt || policy.fence || policy.lastWakeAt || policy.sleptSinceLock);
    EXPECT_TRUE(policy.acceptWake(noon + seconds(4))) << "of a lock that nobody reported";
    EXPECT_EQ(policy.lockedAt, noon + seconds(4));
}

TEST(UnlockTriggerPolicy, theFenceNeverGoesBack) {
    UnlockTriggerPolicy policy;
    policy.lookEnded(noon);
    EXPECT_FALSE(policy.fence) << "not locked";
    policy.screenLocked(noon, true);
    policy.lookEnded(noon + seconds(5));
    policy.lookEnded(noon + seconds(3));
    EXPECT_EQ(policy.fence, noon + seconds(5));
    EXPECT_TRUE(policy.acceptWake(noon + seconds(4)));
    EXPECT_EQ(policy.fence, noon + seconds(5));
}

TEST(UnlockTrigger, olderNamesMeanComingBack) {
    for (const char* text : {"onReturn", "onWake", "onLock"}) {
        EXPECT_EQ(unlockTrigger(text), UnlockTrigger::onReturn) << text;
    }
    EXPECT_EQ(unlockTrigger("onSpace"), UnlockTrigger::onSpace);
    EXPECT_EQ(unlockTrigger("OnSpace"), std::nullopt);
}

}  // namespace
}  // namespace marrowby
