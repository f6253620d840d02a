// SPDX-License-Identifier: Apache-2.0

// The island on AppKit panels, with a fake window server.

#include "Kit/LockScreen.h"
#include "Platforms/macOS/AppKitWindowServer.h"
#include "Tests/Fakes/FakeMainThread.h"
#include "Tests/Fakes/FakeScreenLock.h"
#include "Tests/MacOnLinux/SkyLight.h"
#import "Tests/Unlock/macOS/WindowDriver.h"
#include "Unlock/Island/LockScreenOverlayController.h"

#include <string>
#include <utility>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace marrowby {
namespace {

using testing::ElementsAre;

NSWindow* panel() {
    @autoreleasepool {
        for (NSWindow* window in NSApp.windows)
            if ([window isKindOfClass:NSPanel.class] && window.isVisible) return window;
        return nil;
    }
}

TEST(MacIsland, liesInASpaceAboveTheLockScreenAndShowsEveryPhase) {
    const WindowDriver driver;
    skyLightCalls().clear();
    FakeMainThread mainThread;
    FakeLockState lockState;
    AppKitWindowServer server;
    LockScreen lockScreen(server, lockState);
    LockScreenOverlayController island(
        {.lockScreen = lockScreen, .mainThread = mainThread, .clock = mainThread});
    lockState.setLocked(true);

    const std::pair<const char*, OverlayPhase> phases[] = {
        {"island-closed", OverlayPhase::Closed{}},
        {"island-scanning", OverlayPhase::Scanning{}},
        {"island-prompt", OverlayPhase::Prompt{}},
        {"island-success", OverlayPhase::Success{}},
        {"island-failure", OverlayPhase::Failure{UnlockFailure::NotRecognised{}}}};
    for (const auto& [name, phase] : phases) {
        island.show(phase);
        mainThread.advance(TimeInterval(1));
        WindowDriver::settle();
        ASSERT_TRUE(panel()) << name;
        WindowDriver::takePicture(panel(), name);
    }
    EXPECT_THAT(skyLightCalls(),
                ElementsAre("create 1 0", "level 9 400", "show [9]",
                            "add 9 [" + std::to_string(panel().windowNumber) + "] 7"));

    LockScreenWindow second(lockScreen, nullptr, {.width = 10, .height = 10});
    EXPECT_TRUE(second.show({.width = 20, .height = 20}, false));
    EXPECT_EQ(skyLightCalls().size(), 5U) << "one space for all phases";
    second.hide();
    island.show(OverlayPhase::Leaving{});
    mainThread.advance(TimeInterval(1));
    WindowDriver::settle();
    EXPECT_FALSE(panel());
}

}  // namespace
}  // namespace marrowby
