// SPDX-License-Identifier: Apache-2.0
#include "Tests/Fakes/FakeWorkQueues.h"
#include "Tests/Platforms/SystemWorkQueues.h"
#include "UnlockCore/Platform/WorkQueues.h"

#include <latch>
#include <vector>

#include <gtest/gtest.h>

namespace marrowby {
namespace {

TEST(RunBesideTest, runsBothAtOnce) {
    const auto queues = systemWorkQueues();
    for (int i = 0; i < 200; ++i) {
        // Each waits for the other.
        std::latch both(2);
        int beside = 0;
        int here = 0;
        runInParallel(
            *queues->background(),
            [&] {
                both.arrive_and_wait();
                beside = 1;
            },
            [&] {
                both.arrive_and_wait();
                here = 2;
            });
        ASSERT_EQ(beside + here, 3);
    }
}

TEST(RunBesideTest, doesItAllHereOnceWhereTheQueueIsBusy) {
    FakeWorkQueues queues;
    std::vector<int> order;
    runInParallel(*queues.background(), [&] { order.push_back(2); }, [&] { order.push_back(1); });
    EXPECT_EQ(order, (std::vector{1, 2}));
    queues.runAll();
    EXPECT_EQ(order.size(), 2U);
}

}  // namespace
}  // namespace marrowby
