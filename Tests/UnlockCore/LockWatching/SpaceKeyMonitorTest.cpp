#include "Tests/Fakes/FakeInputIdle.h"
#include "Tests/Fakes/FakeKeyboardDevices.h"
#include "Tests/Fakes/FakeMainThread.h"
#include "UnlockCore/LockWatching/SpaceKeyMonitor.h"

#include <memory>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace marrowby {
namespace {

using testing::ElementsAreArray;

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
    devices.setOpens(false);
    monitor->start();
    EXPECT_FALSE(monitor->isListening());
    devices.setOpens(true);
    for (int round = 0; round < 2; ++round) {
        monitor->start();
        monitor->start();
        EXPECT_TRUE(monitor->isListening());
        devices.space(true);
        monitor->stop();
        devices.space(true);
    }
    EXPECT_EQ(spaces, 2);
    EXPECT_THAT(devices.attempts(), ElementsAreArray(std::vector(3, KeyboardDevices::Match{1, 6})));
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
