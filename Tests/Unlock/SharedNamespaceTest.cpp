#include "Unlock/SharedNamespace.h"

#include <gtest/gtest.h>

namespace marrowby {
namespace {

TEST(SharedNamespace, isWhatTheUserChoseOrThatOfATest) {
    EXPECT_EQ(sharedNamespace({}, {}), std::nullopt);
    EXPECT_EQ(sharedNamespace({}, "7"), "test-7");
    EXPECT_EQ(sharedNamespace("mine", "7"), "mine");
}

}  // namespace
}  // namespace marrowby
