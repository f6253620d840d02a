// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/Desktop/QtMainThread.h"
#include "Platforms/Linux/Desktop/UnixClock.h"
#include "Tests/Platforms/Linux/QtLoop.h"

#include <memory>
#include <optional>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace marrowby {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr TimeInterval tick{0.01};
constexpr TimeInterval never{3600};

struct QtMainThreadTest : testing::Test {
    QtLoop loop;
    UnixSystemClock clock;
    std::unique_ptr<QtMainThread> mainThread = std::make_unique<QtMainThread>();
    std::vector<int> calls;

    std::function<void()> call(int number) {
        return [this, number] { calls.push_back(number); };
    }
};

TEST_F(QtMainThreadTest, runsPostedWorkLaterInOrderOnItsThread) {
    EXPECT_TRUE(mainThread->isCurrent());
    std::optional<bool> elsewhere;
    std::optional<bool> inWork;
    mainThread->post(call(1));
    std::thread([&] {
        elsewhere = mainThread->isCurrent();
        mainThread->post([&] {
            inWork = mainThread->isCurrent();
            calls.push_back(2);
        });
    }).join();
    mainThread->post(call(3));
    EXPECT_THAT(calls, IsEmpty());
    ASSERT_TRUE(loop.runUntil([&] { return calls.size() == 3; }));
    EXPECT_THAT(calls, ElementsAre(1, 2, 3));
    EXPECT_EQ(elsewhere, false);
    EXPECT_EQ(inWork, true);
}

TEST_F(QtMainThreadTest, dropsPendingWorkWhenDestroyed) {
    mainThread->post(call(1));
    const auto alarm = mainThread->at(clock.now(), {}, call(2));
    const auto interval = mainThread->every(TimeInterval(0), {}, call(3));
    mainThread.reset();
    loop.runPending();
    EXPECT_THAT(calls, IsEmpty());
}

TEST_F(QtMainThreadTest, firesInOrderAndNotTooEarly) {
    const Date start = clock.now();
    std::optional<Date> firedAt;
    const auto late = mainThread->at(start + tick * 3, {}, [&] {
        firedAt = clock.now();
        calls.push_back(3);
    });
    const auto early = mainThread->at(start + tick, {}, call(2));
    const auto past = mainThread->at(start - never, {}, call(1));
    const auto far = mainThread->at(start + never, {}, call(9));
    EXPECT_THAT(calls, IsEmpty());
    ASSERT_TRUE(loop.runUntil([&] { return firedAt.has_value(); }));
    EXPECT_THAT(calls, ElementsAre(1, 2, 3));
    EXPECT_GE(*firedAt, start + tick * 3);
}

TEST_F(QtMainThreadTest, cancelsADueCallWithItsTimer) {
    std::unique_ptr<MainThread::Timer> second;
    const auto first = mainThread->at(clock.now() - tick * 2, {}, [&] { second.reset(); });
    second = mainThread->at(clock.now() - tick, {}, call(2));
    const auto third = mainThread->at(clock.now() + tick, {}, call(3));
    ASSERT_TRUE(loop.runUntil([&] { return !calls.empty(); }));
    EXPECT_THAT(calls, ElementsAre(3));
}

TEST_F(QtMainThreadTest, runsTheLoopBetweenSelfRenewingTimers) {
    std::unique_ptr<MainThread::Timer> timer;
    std::function<void()> renew = [&] {
        calls.push_back(1);
        if (calls.size() < 100) timer = mainThread->at(clock.now() - tick, {}, renew);
    };
    renew();
    mainThread->post(call(2));
    ASSERT_TRUE(loop.runUntil([&] { return calls.size() >= 100; }));
    EXPECT_NE(calls.back(), 2);
    EXPECT_THAT(calls, testing::Contains(2).Times(1));
}

TEST_F(QtMainThreadTest, repeatsUntilDestroyedAlsoByItsCallback) {
    std::unique_ptr<MainThread::Timer> timer;
    timer = mainThread->every(tick, tick / 3, [&] {
        calls.push_back(1);
        if (calls.size() == 3) timer.reset();
    });
    ASSERT_TRUE(loop.runUntil([&] { return timer == nullptr; }));
    bool isLater = false;
    const auto later = mainThread->at(clock.now() + tick * 3, {}, [&] { isLater = true; });
    ASSERT_TRUE(loop.runUntil([&] { return isLater; }));
    EXPECT_THAT(calls, ElementsAre(1, 1, 1));
}

}  // namespace
}  // namespace marrowby
