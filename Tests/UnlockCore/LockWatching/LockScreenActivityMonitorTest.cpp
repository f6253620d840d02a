// SPDX-License-Identifier: Apache-2.0
#include "Tests/Fakes/FakeInputIdle.h"
#include "Tests/Fakes/FakeMainThread.h"
#include "UnlockCore/LockWatching/LockScreenActivityMonitor.h"

#include <cmath>
#include <memory>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace marrowby {
namespace {

using testing::IsEmpty;
using testing::SizeIs;

constexpr TimeInterval period{0.3};
// Dates of 2023 in double seconds resolve about 0.1 microseconds.
constexpr double rounding = 1e-5;

struct LockScreenActivityMonitorTest : testing::Test {
    FakeMainThread mainThread;
    FakeInputIdle inputIdle{mainThread};
    std::unique_ptr<LockScreenActivityMonitor> monitor =
        std::make_unique<LockScreenActivityMonitor>(inputIdle, mainThread, mainThread);
    std::vector<InputActivity> activities;

    LockScreenActivityMonitorTest() {
        monitor->onActivity = [this](const InputActivity& a) { activities.push_back(a); };
    }
};

TEST_F(LockScreenActivityMonitorTest, onlyCalibratesOnEveryStart) {
    for (int round = 0; round < 2; ++round) {
        inputIdle.touch();
        monitor->start();
        monitor->start();
        EXPECT_THAT(mainThread.timers(), SizeIs(1));
        mainThread.advance(TimeInterval(2));
        EXPECT_THAT(activities, IsEmpty());
        monitor->stop();
        EXPECT_THAT(mainThread.timers(), IsEmpty());
        mainThread.advance(TimeInterval(10));
    }
}

TEST_F(LockScreenActivityMonitorTest, reportsOnceWhenTheInputWasAndTheQuietBeforeIt) {
    inputIdle.touch(TimeInterval(5));
    monitor->start();
    mainThread.advance(TimeInterval(2));
    inputIdle.touch(TimeInterval(0.125));
    const Date touched = mainThread.now() - TimeInterval(0.125);
    mainThread.advance(TimeInterval(3));
    ASSERT_THAT(activities, SizeIs(1));
    EXPECT_NEAR((activities[0].at - touched).count(), 0, rounding);
    EXPECT_NEAR(activities[0].quietFor.count(), 6.875, rounding);
}

TEST_F(LockScreenActivityMonitorTest, reportsLaterWhatCameWhileNothingWasKnown) {
    inputIdle.touch(TimeInterval(4));
    monitor->start();
    mainThread.advance(TimeInterval(1));
    inputIdle.setKnown(false);
    inputIdle.touch();
    mainThread.advance(TimeInterval(1));
    EXPECT_THAT(activities, IsEmpty());
    inputIdle.setKnown(true);
    mainThread.advance(TimeInterval(1));
    EXPECT_THAT(activities, SizeIs(1));
}

TEST_F(LockScreenActivityMonitorTest, mayBeDestroyedByItsOwnReport) {
    monitor->onActivity = [this](const InputActivity&) { monitor.reset(); };
    monitor->start();
    inputIdle.touch();
    mainThread.advance(period * 4);
    EXPECT_EQ(monitor, nullptr);
    EXPECT_THAT(mainThread.timers(), IsEmpty());
}

TEST(IdleResetDetector, toleratesSmallChangesWithoutFollowingThem) {
    IdleResetDetector detector{.tolerance = TimeInterval(0.0625), .lastEventUptime = {}};
    EXPECT_EQ(detector.see(TimeInterval(10)), std::nullopt);
    EXPECT_EQ(detector.see(TimeInterval(10.0625)), std::nullopt);
    EXPECT_EQ(detector.see(TimeInterval(9)), std::nullopt);
    // Measured from the input that was reported last, so that small steps add up.
    EXPECT_EQ(detector.see(TimeInterval(10.125)), TimeInterval(0.125));
}

}  // namespace
}  // namespace marrowby
