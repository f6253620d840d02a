// SPDX-License-Identifier: Apache-2.0
#include "UnlockCore/Status/UnlockOnboardingFlow.h"

#include <gtest/gtest.h>

namespace marrowby {
namespace {

using Step = UnlockOnboardingStep;
using Mode = UnlockOnboardingMode;

const UnlockOnboardingFacts everything{.understood = true,
                                       .cameraAllowed = true,
                                       .accessibilityAllowed = true,
                                       .enrolmentComplete = true,
                                       .name = "Anna",
                                       .passwordSaved = true,
                                       .triggers = {}};

TEST(UnlockOnboardingFlow, waitsAtEachStepForWhatItAsks) {
    UnlockOnboardingFacts facts;
    UnlockOnboardingFlow flow(Mode::setUp);
    EXPECT_TRUE(flow.goForward(facts));
    const struct {
        Step step;
        void (*meet)(UnlockOnboardingFacts&);
        bool movesByItself;
    } cases[] = {
        {Step::security, [](auto& f) { f.understood = true; }, false},
        {Step::camera, [](auto& f) { f.cameraAllowed = true; }, true},
        {Step::accessibility, [](auto& f) { f.accessibilityAllowed = true; }, true},
        {Step::enrol, [](auto& f) { f.enrolmentComplete = true; }, false},
        {Step::name, [](auto& f) { f.name = " A\n"; }, false},
        {Step::password, [](auto& f) { f.passwordSaved = true; }, false},
    };
    facts.name = " \n\t";
    for (const auto& [step, meet, movesByItself] : cases) {
        ASSERT_EQ(flow.step(), step);
        EXPECT_FALSE(flow.permissionChanged(facts));
        EXPECT_FALSE(flow.goForward(facts));
        meet(facts);
        EXPECT_EQ(flow.permissionChanged(facts), movesByItself);
        if (movesByItself) continue;
        EXPECT_TRUE(flow.goForward(facts));
    }
    EXPECT_EQ(flow.step(), Step::triggers);
}

TEST(UnlockOnboardingFlow, goesBackToTheNearestStepWhereItMay) {
    UnlockOnboardingFlow flow(Mode::setUp);
    flow.goBack();
    EXPECT_EQ(flow.step(), Step::welcome);
    while (flow.step() != Step::password)
        ASSERT_TRUE(flow.goForward(everything));
    flow.goBack();
    EXPECT_EQ(flow.step(), Step::name);
    EXPECT_FALSE(flow.forward());
    ASSERT_TRUE(flow.goForward(everything));
    EXPECT_TRUE(flow.forward());
    ASSERT_TRUE(flow.goForward(everything));
    for (const Step step : {Step::triggers, Step::done}) {
        EXPECT_EQ(flow.step(), step);
        EXPECT_FALSE(flow.canGoBack());
        flow.goBack();
        EXPECT_EQ(flow.step(), step);
        ASSERT_TRUE(flow.goForward(everything));
    }
    EXPECT_TRUE(flow.isFinished());
    EXPECT_FALSE(flow.goForward(everything));
}

TEST(UnlockOnboardingFlow, followsHowTheLockIsOpened) {
    UnlockOnboardingFacts facts = everything;
    UnlockOnboardingFlow flow(Mode::setUp, LockOpening::unsupported);
    EXPECT_TRUE(flow.isLastStep());
    // The desktop answered late.
    flow.follow(LockOpening::asking);
    while (flow.step() != Step::consent) {
        EXPECT_NE(flow.step(), Step::accessibility);
        ASSERT_TRUE(flow.goForward(facts));
    }
    EXPECT_FALSE(flow.goForward(facts));
    flow.goBack();
    EXPECT_EQ(flow.step(), Step::name);
    facts.consentSaved = true;
    EXPECT_TRUE(flow.goForward(facts) && flow.goForward(facts));
    EXPECT_EQ(flow.step(), Step::triggers);

    UnlockOnboardingFlow password(Mode::setUp);
    while (password.step() != Step::password)
        ASSERT_TRUE(password.goForward(facts));
    password.follow(LockOpening::asking);
    EXPECT_EQ(password.step(), Step::name);
    password.follow(LockOpening::forbidden);
    EXPECT_EQ(password.step(), Step::welcome);
}

}  // namespace
}  // namespace marrowby
