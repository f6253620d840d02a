// SPDX-License-Identifier: Apache-2.0
#include "Tests/Fakes/FakeInputIdle.h"
#include "Tests/Fakes/FakeMainThread.h"
#include "Tests/Fakes/FakeSpaceKeys.h"
#include "UnlockCore/LockWatching/SpaceKeyMonitor.h"

#include <memory>

#include <gtest/gtest.h>

namespace marrowby {
namespace {

struct SpaceKeyMonitorTest : testing::Test {
    FakeMainThread clock;
    FakeInputIdle uptimes{clock};
    OwnKeystrokes own{uptimes};
    FakeSpaceKeys keys;
    std::unique_ptr<SpaceKeyMonitor> monitor = std::make_unique<SpaceKeyMonitor>(keys, own);
    int spaces = 0;

    SpaceKeyMonitorTest() {
        monitor->onSpace = [this] { ++spaces; };
    }
};

TEST_F(SpaceKeyMonitorTest, opensKeyboardsOnceAndReleasesThem) {
    keys.opens = false;
    monitor->start();
    EXPECT_FALSE(monitor->isListening());
    keys.opens = true;
    for (int round = 0; round < 2; ++round) {
        monitor->start();
        monitor->start();
        EXPECT_TRUE(monitor->isListening());
        keys.press();
        monitor->stop();
        keys.press();
    }
    EXPECT_EQ(spaces, 2);
}

TEST_F(SpaceKeyMonitorTest, mayBeDestroyedByItsOwnReport) {
    monitor->start();
    monitor->onSpace = [this] { monitor.reset(); };
    keys.press();
    keys.press();
    EXPECT_EQ(monitor, nullptr);
}

}  // namespace
}  // namespace marrowby
