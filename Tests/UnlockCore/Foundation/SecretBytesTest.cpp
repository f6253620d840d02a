// SPDX-License-Identifier: Apache-2.0
#include "UnlockCore/Foundation/SecretBytes.h"

#include <array>
#include <utility>

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

namespace marrowby {
namespace {

constexpr std::array<std::uint8_t, 4> secret{1, 2, 3, 4};

TEST(SecretBytes, movesItsPagesAndLeavesTheSourceEmpty) {
    auto first = SecretBytes::copyOf(secret);
    ASSERT_TRUE(first);
    const std::uint8_t* home = first->values().data();
    SecretBytes second = std::move(*first);
    EXPECT_EQ(second.values().data(), home);
    EXPECT_TRUE(std::ranges::equal(second.values(), secret));
    EXPECT_TRUE(first->empty());
}

TEST(SecretBytes, wipesAndShrinksToZeros) {
    auto bytes = SecretBytes::copyOf(secret);
    ASSERT_TRUE(bytes);
    const std::span<const std::uint8_t> all = bytes->values();
    bytes->shrink(2);
    EXPECT_EQ(bytes->size(), 2U);
    EXPECT_EQ(all[2], 0);
    EXPECT_EQ(all[3], 0);
    bytes->wipe();
    EXPECT_EQ(all[0], 0);
    EXPECT_EQ(bytes->size(), 2U);
}

/// In a child without any right to lock memory.
[[noreturn]] void askForSecretsWithoutTheRight() {
    const rlimit none{.rlim_cur = 0, .rlim_max = 0};
    // The superuser may lock beyond the limit: the child gives that up.
    if (::setrlimit(RLIMIT_MEMLOCK, &none) != 0 || (::geteuid() == 0 && ::setuid(65534) != 0)) {
        ::_exit(2);
    }
    const auto refused = SecretBytes::create(16);
    ::_exit(!refused && refused.error() == SecretMemoryError::pageLockRefused ? 0 : 1);
}

TEST(SecretBytesDeathTest, reportsAPageLockThatTheSystemRefuses) {
#if defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
    GTEST_SKIP() << "Skipped: under this sanitizer mlock() does nothing.";
#endif
#endif
    EXPECT_EXIT(askForSecretsWithoutTheRight(), testing::ExitedWithCode(0), "");
}

TEST(SecretBytes, refusesASizeThatOverflows) {
    const auto bytes = SecretArray<char16_t>::create(static_cast<std::size_t>(-1) / 2);
    ASSERT_FALSE(bytes);
    EXPECT_EQ(bytes.error(), SecretMemoryError::outOfMemory);
}

}  // namespace
}  // namespace marrowby
