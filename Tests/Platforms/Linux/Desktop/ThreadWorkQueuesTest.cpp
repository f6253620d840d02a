// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/Desktop/ThreadWorkQueues.h"

#include <atomic>
#include <future>
#include <latch>
#include <numeric>
#include <thread>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace marrowby {
namespace {

using testing::Each;
using testing::SizeIs;

TEST(ThreadWorkQueues, aSerialQueueKeepsOrderOnOneThreadAndFinishesWhenDestroyed) {
    ThreadWorkQueues queues;
    auto queue = queues.serial("test.serial.queue");
    std::vector<int> order;
    std::vector<std::thread::id> threads;
    std::promise<void> gate;
    queue->async([opened = gate.get_future().share()] { opened.wait(); });
    for (int i = 0; i < 200; ++i) {
        queue->async([&, i] {
            order.push_back(i);
            threads.push_back(std::this_thread::get_id());
        });
    }
    gate.set_value();
    queue.reset();

    std::vector<int> expected(200);
    std::iota(expected.begin(), expected.end(), 0);
    EXPECT_EQ(order, expected);
    ASSERT_THAT(threads, SizeIs(200));
    EXPECT_THAT(threads, Each(threads.front()));
    EXPECT_NE(threads.front(), std::this_thread::get_id());
}

TEST(ThreadWorkQueues, runsNothingTwiceAndLosesNothingFromManyThreads) {
    std::atomic<int> runs = 0;
    {
        ThreadWorkQueues queues;
        const auto serial = queues.serial("test");
        std::vector<std::thread> posters;
        for (int poster = 0; poster < 4; ++poster) {
            posters.emplace_back([&] {
                for (int i = 0; i < 250; ++i) {
                    serial->async([&] { ++runs; });
                    queues.background()->async([&] { ++runs; });
                }
            });
        }
        for (auto& poster : posters)
            poster.join();
    }
    EXPECT_EQ(runs, 2000);
}

TEST(ThreadWorkQueues, theBackgroundQueueRunsOnWhileSomeWorkBlocks) {
    // Each waits for all others, which needs several threads.
    std::latch meeting(4);
    std::promise<void> met;
    ThreadWorkQueues queues;
    for (int i = 0; i < 3; ++i)
        queues.background()->async([&] { meeting.arrive_and_wait(); });
    queues.background()->async([&] {
        meeting.arrive_and_wait();
        met.set_value();
    });
    met.get_future().wait();
}

TEST(ThreadWorkQueues, waitsForAQueueThatItsOwnWorkDestroyed) {
    bool isDone = false;
    {
        ThreadWorkQueues queues;
        auto queue = queues.serial("test");
        std::promise<void> handedOver;
        auto* const raw = queue.get();
        raw->async([wait = handedOver.get_future().share()] { wait.wait(); });
        // The work holds the last reference and destroys the queue on its own thread, while more
        // work is pending.
        raw->async([held = std::move(queue)]() mutable { held.reset(); });
        raw->async([&isDone] {
            std::this_thread::yield();
            isDone = true;
        });
        handedOver.set_value();
    }
    EXPECT_TRUE(isDone);
}

}  // namespace
}  // namespace marrowby
