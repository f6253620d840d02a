// SPDX-License-Identifier: Apache-2.0
#include "Kit/LockScreenWindow.h"
#include "Tests/Fakes/FakeScreenLock.h"
#include "Tests/Fakes/FakeWindowServer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace marrowby {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr Rect place{.x = 1, .y = 2, .width = 30, .height = 4};

struct LockScreenWindowTest : testing::Test {
    FakeWindowServer server;
    FakeLockState lockState;
    LockScreen lockScreen{server, lockState};

    void setLocked(bool isLocked) { lockState.setLocked(isLocked); }
};

TEST_F(LockScreenWindowTest, twoWindowsShareOneSpaceAndEnterItOnce) {
    setLocked(true);
    LockScreenWindow first(lockScreen, nullptr, {});
    LockScreenWindow second(lockScreen, nullptr, {});
    EXPECT_TRUE(first.show(place, false));
    EXPECT_TRUE(first.show(place, false));
    EXPECT_TRUE(second.show(place, true));
    EXPECT_THAT(server.calls, ElementsAre("space", "1 front at 1 2", "add 1", "1 front at 1 2",
                                          "2 front at 1 2", "add 2"));
    // Unlocked meanwhile: where it is it stays.
    setLocked(false);
    EXPECT_TRUE(first.show(place, true));
    EXPECT_FALSE(first.show(place, false));
}

TEST_F(LockScreenWindowTest, makesNoSpaceWhileUnlocked) {
    for (const bool isKnown : {false, true}) {
        isKnown ? setLocked(false) : lockState.set({});
        LockScreenWindow window(lockScreen, nullptr, {});
        EXPECT_FALSE(window.show(place, false));
        EXPECT_THAT(server.calls, IsEmpty());
    }
    LockScreenWindow window(lockScreen, nullptr, {});
    EXPECT_FALSE(window.show(place, true));
    EXPECT_THAT(server.calls, ElementsAre("3 front at 1 2"));
    window.hide();
    EXPECT_EQ(server.calls.back(), "3 out");
}

TEST_F(LockScreenWindowTest, worksWithoutSpaces) {
    server.hasSpaces = false;
    setLocked(true);
    EXPECT_FALSE(lockScreen.isSpaceAvailable());
    LockScreenWindow window(lockScreen, nullptr, {});
    EXPECT_FALSE(window.show(place, false));
    EXPECT_FALSE(window.show(place, true));
    EXPECT_THAT(server.calls, ElementsAre("1 front at 1 2"));

    server.hasPanels = false;
    LockScreenWindow none(lockScreen, nullptr, {});
    EXPECT_FALSE(none.show(place, true));
    none.hide();
}

}  // namespace
}  // namespace marrowby
