// SPDX-License-Identifier: Apache-2.0
#include "UnlockCore/LockWatching/UnlockGate.h"
#include "UnlockCore/LockWatching/UnlockTriggerPolicy.h"

#include <utility>

#include <gtest/gtest.h>

namespace marrowby {
namespace {

TEST(UnlockGate, theFirstUnmetConditionRefuses) {
    const std::pair<bool UnlockConditions::*, const char*> rows[] = {
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
    for (const auto& [condition, refusal] : rows) {
        UnlockConditions lacking{true, true, true, true, true, true, true, true};
        lacking.*condition = false;
        for (const UnlockConditions& conditions : {growing, lacking}) {
            const auto decision = UnlockGate::decide(conditions);
            const auto* refuse = std::get_if<UnlockGate::Decision::Refuse>(&decision);
            ASSERT_NE(refuse, nullptr) << refusal;
            EXPECT_STREQ(name(refuse->refusal).english(), refusal);
        }
        growing.*condition = true;
    }
    EXPECT_EQ(UnlockGate::decide(growing), UnlockGate::Decision(UnlockGate::Decision::Type{}));
}

TEST(UnlockTriggerPolicy, theFenceNeverGoesBack) {
    const Date noon(TimeInterval(43'200));
    const TimeInterval second(1);
    UnlockTriggerPolicy policy;
    policy.scanEnded(noon);
    EXPECT_FALSE(policy.fence) << "not locked";
    policy.screenLocked(noon, true);
    policy.scanEnded(noon + 5 * second);
    policy.scanEnded(noon + 3 * second);
    EXPECT_EQ(policy.fence, noon + 5 * second);
    EXPECT_TRUE(policy.acceptWake(noon + 4 * second));
    EXPECT_EQ(policy.fence, noon + 5 * second);
}

}  // namespace
}  // namespace marrowby
