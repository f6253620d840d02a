// SPDX-License-Identifier: Apache-2.0
#include "Tests/Fakes/FakeInputIdle.h"
#include "Tests/Fakes/FakeKeyEvents.h"
#include "Tests/Fakes/FakeMainThread.h"
#include "Tests/Fakes/FakeSpaceKeys.h"
#include "UnlockCore/LockWatching/LockScreenActivityMonitor.h"
#include "UnlockCore/LockWatching/OwnKeystrokes.h"
#include "UnlockCore/LockWatching/SpaceKeyMonitor.h"

#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace marrowby {
namespace {

using testing::IsEmpty;
using testing::SizeIs;

/// A user and this process in front of the same keyboard.
struct OwnKeystrokesTest : testing::Test {
    FakeMainThread mainThread;
    FakeInputIdle idle{mainThread};
    FakeKeyEvents keyboard;
    FakeSpaceKeys keys;
    OwnKeystrokes own{idle};
    TrackedKeyEvents keyEvents{keyboard, own};
    ForeignInputIdle foreignIdle{idle, own};
    LockScreenActivityMonitor activity{foreignIdle, mainThread, mainThread};
    SpaceKeyMonitor spaceKeys{keys, own};
    std::vector<InputActivity> activities;
    int spaces = 0;

    OwnKeystrokesTest() {
        activity.onActivity = [this](const InputActivity& input) { activities.push_back(input); };
        spaceKeys.onSpace = [this] { ++spaces; };
        activity.start();
        spaceKeys.start();
    }

    /// A password of eight keys over two seconds, as the event system and the keyboards see it.
    void type() {
        const auto source = keyEvents.makeSource(u" ", {});
        for (int key = 0; key < 8; ++key) {
            EXPECT_TRUE(source->postText(u" ", true));
            idle.touch(TimeInterval(-0.05));
            mainThread.advance(TimeInterval(0.25));
            keys.press({.isSynthetic = true});
        }
    }
};

TEST_F(OwnKeystrokesTest, areNeitherActivityNorSpace) {
    type();
    mainThread.advance(TimeInterval(30));
    EXPECT_THAT(activities, IsEmpty());
    EXPECT_EQ(spaces, 0);
}

TEST_F(OwnKeystrokesTest, hideNoUserInputBeforeOrAfter) {
    mainThread.advance(TimeInterval(10));
    idle.touch();
    mainThread.advance(TimeInterval(1));
    type();
    mainThread.advance(TimeInterval(5));
    idle.touch();
    mainThread.advance(TimeInterval(1));
    ASSERT_THAT(activities, SizeIs(2));
    // Since the user's own input, not since ours.
    EXPECT_NEAR(activities[1].quietFor.count(), 8, 0.01);

    // A remote user sends synthetic keys too.
    keys.press({.isSynthetic = true});
    EXPECT_EQ(spaces, 1);
    type();
    keys.press();
    EXPECT_EQ(spaces, 2);
}

TEST_F(OwnKeystrokesTest, areRecognisedWhileBeingPosted) {
    const OwnKeystrokes::Posting posting(own);
    mainThread.advance(TimeInterval(4));
    idle.touch();
    mainThread.advance(TimeInterval(1));
    EXPECT_THAT(activities, IsEmpty());
}

}  // namespace
}  // namespace marrowby
