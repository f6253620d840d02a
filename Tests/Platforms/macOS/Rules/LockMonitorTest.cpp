// SPDX-License-Identifier: Apache-2.0
#include "Platforms/macOS/Rules/LockMonitor.h"
#include "Tests/Fakes/FakeMainThread.h"
#include "Tests/Platforms/macOS/Rules/FakeNotificationCenter.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace marrowby {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

struct LockMonitorTest : testing::Test {
    FakeMainThread mainThread;
    FakeNotificationCenter workspace{&mainThread};
    FakeNotificationCenter distributed{&mainThread};
    std::unique_ptr<LockMonitor> monitor = std::make_unique<LockMonitor>(workspace, distributed);
    std::vector<LockEvent> events;

    LockMonitorTest() {
        monitor->onEvent = [this](LockEvent event) {
            EXPECT_EQ(monitor->lastEvent(), event) << "recorded before it is reported";
            events.push_back(event);
        };
    }

    void post(FakeNotificationCenter& center, const std::string& name) {
        center.post(name);
        mainThread.runPosted();
    }
};

TEST_F(LockMonitorTest, mapsEachNotificationToItsEvent) {
    const struct {
        FakeNotificationCenter& center;
        const char* name;
        LockEvent event;
        bool sleepsAfterwards;
    } cases[] = {
        {distributed, "com.apple.screenIsLocked", LockEvent::screenLocked, false},
        {workspace, "NSWorkspaceScreensDidSleepNotification", LockEvent::willSleep, true},
        {distributed, "com.apple.screensaver.didstop", LockEvent::wake, true},
        {workspace, "NSWorkspaceScreensDidWakeNotification", LockEvent::wake, false},
        {workspace, "NSWorkspaceWillSleepNotification", LockEvent::willSleep, true},
        {distributed, "com.apple.screenIsUnlocked", LockEvent::screenUnlocked, true},
        {workspace, "NSWorkspaceDidWakeNotification", LockEvent::wake, false},
    };
    monitor->start();
    EXPECT_EQ(monitor->lastEvent(), std::nullopt);
    for (const auto& [center, name, event, sleepsAfterwards] : cases) {
        events.clear();
        post(center, name);
        EXPECT_THAT(events, ElementsAre(event)) << name;
        EXPECT_EQ(monitor->isSleeping(), sleepsAfterwards) << name;
    }
}

TEST_F(LockMonitorTest, registersOncePerStartAndUnregistersAll) {
    for (int round = 0; round < 2; ++round) {
        monitor->start();
        monitor->start();
        EXPECT_THAT(distributed.observedNames(), SizeIs(3));
        EXPECT_THAT(workspace.observedNames(), SizeIs(4));
        monitor->stop();
        EXPECT_THAT(distributed.observedNames(), IsEmpty());
        EXPECT_THAT(workspace.observedNames(), IsEmpty());
    }
    post(distributed, "com.apple.screenIsLocked");
    EXPECT_THAT(events, IsEmpty());
}

TEST_F(LockMonitorTest, isSilentOnceDestroyed) {
    monitor->start();
    workspace.post("NSWorkspaceDidWakeNotification");
    monitor.reset();
    mainThread.runPosted();
    EXPECT_THAT(events, IsEmpty());
}

TEST_F(LockMonitorTest, mayBeDestroyedInItsCallback) {
    monitor->start();
    monitor->onEvent = [this](LockEvent) { monitor.reset(); };
    post(distributed, "com.apple.screenIsLocked");
    EXPECT_EQ(monitor, nullptr);
    EXPECT_THAT(distributed.observedNames(), IsEmpty());
}

}  // namespace
}  // namespace marrowby
