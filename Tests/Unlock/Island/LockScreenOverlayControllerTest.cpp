// SPDX-License-Identifier: Apache-2.0
#include "Tests/Fakes/FakeMainThread.h"
#include "Tests/Fakes/FakeScreenLock.h"
#include "Tests/Fakes/FakeWindowServer.h"
#include "Unlock/Island/LockScreenOverlayController.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace marrowby {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

struct LockScreenOverlayControllerTest : testing::Test {
    FakeMainThread mainThread;
    FakeLockState lockState;
    FakeWindowServer server;
    LockScreen lockScreen{server, lockState};
    LockScreenOverlayController controller{
        {.lockScreen = lockScreen, .mainThread = mainThread, .clock = mainThread}};
    int hovers = 0;

    void SetUp() override {
        server.hasSpaces = false;
        controller.onHover = [this] { ++hovers; };
    }
    void show(const OverlayPhase& phase) {
        controller.show(phase);
        server.calls.clear();
    }
};

TEST_F(LockScreenOverlayControllerTest, wakesUpOnlyWhileSomethingMoves) {
    EXPECT_THAT(mainThread.timers(), IsEmpty());
    controller.show(OverlayPhase::Leaving{});
    EXPECT_THAT(server.calls, IsEmpty());
    EXPECT_THAT(mainThread.timers(), IsEmpty());

    controller.show(OverlayPhase::Closed{});
    EXPECT_THAT(server.calls, Contains("1 front at 560 0"));
    EXPECT_THAT(mainThread.timers(), SizeIs(1));
    mainThread.advance(TimeInterval(1));
    EXPECT_THAT(mainThread.timers(), IsEmpty());

    controller.show(OverlayPhase::Scanning{});
    mainThread.advance(TimeInterval(10));
    EXPECT_THAT(mainThread.timers(), SizeIs(1));
    controller.show(OverlayPhase::Success{});
    mainThread.advance(TimeInterval(1));
    EXPECT_THAT(mainThread.timers(), IsEmpty());

    show(OverlayPhase::Leaving{});
    mainThread.advance(TimeInterval(1));
    EXPECT_THAT(server.calls, ElementsAre("1 out"));
    EXPECT_THAT(mainThread.timers(), IsEmpty());

    controller.show(OverlayPhase::Scanning{});
    show(OverlayPhase::Hidden{});
    EXPECT_THAT(mainThread.timers(), IsEmpty());
    EXPECT_EQ(server.panelsMade, 1);
}

TEST_F(LockScreenOverlayControllerTest, takesAHoverWhereALookCanBegin) {
    constexpr Point onIt{.x = 720, .y = 0};
    constexpr Point beside{.x = 600, .y = 500};
    server.movePointer(onIt);
    controller.show(OverlayPhase::Closed{});
    // One that rests there has to leave first.
    server.movePointer({.x = 721, .y = 3});
    EXPECT_EQ(hovers, 0);
    server.movePointer(beside);
    controller.onHover = [this] {
        ++hovers;
        controller.show(OverlayPhase::Scanning{});
    };
    server.movePointer(onIt);
    EXPECT_EQ(hovers, 1);
    EXPECT_FALSE(server.isPointerWatched());

    controller.show(OverlayPhase::Failure{UnlockFailure::NotRecognised{}});
    server.movePointer(beside);
    server.movePointer(onIt);
    EXPECT_EQ(hovers, 2);
    controller.show(OverlayPhase::Closed{});
    EXPECT_TRUE(server.isPointerWatched());
    controller.show(OverlayPhase::Hidden{});
    EXPECT_FALSE(server.isPointerWatched());
}

TEST_F(LockScreenOverlayControllerTest, doesWithoutAWindowUntilThereIsOne) {
    server.hasPanels = false;
    controller.show(OverlayPhase::Closed{});
    server.screen.reset();
    controller.show(OverlayPhase::Scanning{});
    EXPECT_THAT(mainThread.timers(), IsEmpty());
    EXPECT_FALSE(server.isPointerWatched());

    server.hasPanels = true;
    server.screen = {.frame = {.x = 0, .y = 0, .width = 1440, .height = 900},
                     .notch = {.width = 500, .height = 30}};
    controller.show(OverlayPhase::Prompt{});
    EXPECT_THAT(server.calls, Contains("1 front at 450 0"));
    EXPECT_THAT(mainThread.timers(), SizeIs(1));
}

}  // namespace
}  // namespace marrowby
