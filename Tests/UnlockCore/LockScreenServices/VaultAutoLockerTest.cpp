// SPDX-License-Identifier: Apache-2.0
#include "Tests/Fakes/VaultFixture.h"
#include "UnlockCore/LockScreenServices/VaultAutoLocker.h"

#include <gtest/gtest.h>

namespace marrowby {
namespace {

constexpr TimeInterval week(604'800);
constexpr TimeInterval tick(300);

struct Bench : VaultFixture {
    std::optional<TimeInterval> limit = week;
    VaultAutoLocker locker{*vault, [this] { return limit; }, mainThread, mainThread};

    Bench() { (void)unlock(); }
};

TEST(VaultAutoLocker, locksAtTheFirstLookAfterTheLimit) {
    Bench bench;
    bench.mainThread.advance(TimeInterval(1));
    bench.locker.start();
    // The looks come 1 s after whole ticks since the unlock.
    bench.mainThread.advance(week - tick);
    EXPECT_TRUE(bench.vault->isUnlocked());
    bench.mainThread.advance(tick - TimeInterval(1));
    EXPECT_TRUE(bench.vault->isUnlocked()) << "the limit has passed, the look has not come";
    bench.mainThread.advance(TimeInterval(1));
    EXPECT_FALSE(bench.vault->isUnlocked());
}

TEST(VaultAutoLocker, countsFromTheLastUseAndAsksForTheLimitAtEveryLook) {
    Bench bench;
    bench.mainThread.advance(week);
    bench.vault->recordActivity();
    const Date used = bench.mainThread.now();
    bench.limit.reset();
    bench.locker.check(used + 1000 * week);
    bench.limit = week;
    bench.locker.check(used + week - TimeInterval(1));
    bench.locker.check(used - week);
    EXPECT_TRUE(bench.vault->isUnlocked());
    bench.locker.check(used + week);
    EXPECT_FALSE(bench.vault->isUnlocked());
}

TEST(VaultAutoLocker, hasOneTimerWhileStarted) {
    Bench bench;
    bench.locker.start();
    bench.locker.start();
    ASSERT_EQ(bench.mainThread.timers().size(), 1U);
    bench.locker.stop();
    EXPECT_TRUE(bench.mainThread.timers().empty());
    bench.mainThread.advance(week);
    EXPECT_TRUE(bench.vault->isUnlocked());
    bench.locker.start();
    EXPECT_FALSE(bench.vault->isUnlocked()) << "looks at once";
}

}  // namespace
}  // namespace marrowby
