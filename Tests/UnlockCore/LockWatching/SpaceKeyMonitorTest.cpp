#include "Tests/Fakes/FakeInputIdle.h"
#include "Tests/Fakes/FakeKeyboardDevices.h"
#include "Tests/Fakes/FakeMainThread.h"
#include "UnlockCore/LockWatching/SpaceKeyMonitor.h"

#include <memory>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace marrowby {
namespace {

using testing::ElementsAre;
using testing::SizeIs;

struct SpaceKeyMonitorTest : testing::Test {
    FakeMainThread clock;
    FakeInputIdle uptimes{clock};
    OwnKeystrokes own{uptimes};
    FakeKeyboardDevices devices;
    std::unique_ptr<SpaceKeyMonitor> monitor = std::make_unique<SpaceKeyMonitor>(devices, own);
    int spaces = 0;

    SpaceKeyMonitorTest() {
        monitor->onSpace = [this] { ++spaces; };
    }
};

TEST_F(SpaceKeyMonitorTest, reportsKeyDownsOfSpaceOnly) {
    monitor->start();
    for (const KeyboardDevices::InputValue& value : {
             KeyboardDevices::InputValue{7, 44, 1},
             KeyboardDevices::InputValue{7, 44, 1},  // held down
             KeyboardDevices::InputValue{7, 44, 0},
             KeyboardDevices::InputValue{7, 44, 2},
             KeyboardDevices::InputValue{7, 40, 1},
             KeyboardDevices::InputValue{12, 44, 1},
         }) {
        devices.send(value);
    }
    EXPECT_EQ(spaces, 2);
}

TEST_F(SpaceKeyMonitorTest, opensKeyboardsOnceAndLetsThemGo) {
    monitor->start();
    monitor->start();
    EXPECT_TRUE(monitor->isListening());
    EXPECT_THAT(devices.attempts(), ElementsAre(KeyboardDevices::Match{1, 6}));
    monitor->stop();
    monitor->stop();
    EXPECT_FALSE(monitor->isListening());
    devices.space(true);
    EXPECT_EQ(spaces, 0);
    monitor->start();
    devices.space(true);
    EXPECT_EQ(spaces, 1);
}

TEST_F(SpaceKeyMonitorTest, staysIdleWhenKeyboardsCannotBeOpened) {
    devices.setAccess(false);
    devices.setOpens(false);
    EXPECT_FALSE(monitor->hasAccess());
    monitor->start();
    EXPECT_FALSE(monitor->isListening());

    devices.setAccess(true);
    devices.setOpens(true);
    EXPECT_TRUE(monitor->hasAccess());
    monitor->start();
    EXPECT_TRUE(monitor->isListening());
    EXPECT_THAT(devices.attempts(), SizeIs(2));
}

TEST_F(SpaceKeyMonitorTest, mayBeDestroyedByItsOwnReport) {
    monitor->start();
    monitor->onSpace = [this] { monitor.reset(); };
    devices.space(true);
    devices.space(true);
    EXPECT_EQ(monitor, nullptr);
}

}  // namespace
}  // namespace marrowby
