#include "Tests/Fakes/VaultBench.h"
#include "UnlockCore/LockScreenServices/VaultAutoLocker.h"
#include "UnlockCore/Storage/CredentialStore.h"

#include <gtest/gtest.h>

namespace marrowby {
namespace {

constexpr TimeInterval week(604'800);
constexpr TimeInterval tick(300);

struct Bench : VaultBench {
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

TEST(VaultAutoLocker, countsFromTheLastUse) {
    Bench bench;
    CredentialStore credentials(bench.passwordFile, *bench.vault);
    auto password = SecretBytes::copyOf(bytesOf("p")).value();
    ASSERT_TRUE(credentials.save(password));
    bench.locker.start();
    bench.mainThread.advance(week - tick);
    EXPECT_TRUE(credentials.withPassword([](std::span<const std::uint8_t>) {}));
    bench.mainThread.advance(week - tick);
    EXPECT_TRUE(bench.vault->isUnlocked());
    bench.mainThread.advance(tick);
    EXPECT_FALSE(bench.vault->isUnlocked());
}

TEST(VaultAutoLocker, comparesAndAsksForTheLimitAtEveryLook) {
    Bench bench;
    const Date opened = bench.mainThread.now();
    bench.limit.reset();
    bench.locker.check(opened + 1000 * week);
    EXPECT_TRUE(bench.vault->isUnlocked());
    bench.limit = week;
    bench.locker.check(opened + week - TimeInterval(1));
    bench.locker.check(opened - week);
    EXPECT_TRUE(bench.vault->isUnlocked());
    bench.locker.check(opened + week);
    EXPECT_FALSE(bench.vault->isUnlocked());
}

TEST(VaultAutoLocker, hasOneTimerWhileStarted) {
    Bench bench;
    bench.locker.start();
    bench.locker.start();
    ASSERT_EQ(bench.mainThread.timers().size(), 1U);
    EXPECT_EQ(bench.mainThread.timers()[0].interval, tick);
    EXPECT_EQ(bench.mainThread.timers()[0].tolerance, TimeInterval(30));
    bench.locker.stop();
    EXPECT_TRUE(bench.mainThread.timers().empty());
    bench.mainThread.advance(week);
    EXPECT_TRUE(bench.vault->isUnlocked());
    bench.locker.start();
    EXPECT_FALSE(bench.vault->isUnlocked()) << "looks at once";
}

}  // namespace
}  // namespace marrowby
