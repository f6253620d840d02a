#include "Platforms/Linux/BytePool.h"

#include <optional>

#include <gtest/gtest.h>

namespace marrowby {
namespace {

TEST(BytePoolTest, lendsWhatCameBackAndNothingThatIsStillHeld) {
    std::optional<BytePool> pool(1);
    auto first = pool->take(1000);
    const auto second = pool->take(1000);
    EXPECT_NE(first->data(), second->data());
    const auto* known = first->data();
    first.reset();
    const auto third = pool->take(500);
    EXPECT_EQ(third->data(), known);
    EXPECT_EQ(third->size(), 500U);
    // What is lent outlives the pool.
    pool.reset();
    EXPECT_EQ(second->size(), 1000U);
}

}  // namespace
}  // namespace marrowby
