// SPDX-License-Identifier: Apache-2.0
#include "UnlockCore/Foundation/UUID.h"

#include <gtest/gtest.h>

namespace marrowby {
namespace {

TEST(UUID, readsEitherCaseAndWritesUpperCase) {
    const auto id = UUID::parse("0f8fad5b-d9cb-469f-a165-70867728950e");
    ASSERT_TRUE(id);
    EXPECT_EQ(id->string(), "0F8FAD5B-D9CB-469F-A165-70867728950E");
    EXPECT_EQ(UUID::parse(id->string()), id);
}

TEST(UUID, refusesAnythingElse) {
    for (const auto* text :
         {"", "0f8fad5b-d9cb-469f-a165-70867728950", "0f8fad5bd9cb469fa16570867728950e",
          "0f8fad5b-d9cb-469f-a165-70867728950g", "0f8fad5b-d9cb-469f-a165-70867728950e "}) {
        EXPECT_FALSE(UUID::parse(text)) << text;
    }
}

TEST(UUID, marksRandomBytesAsVersionFour) {
    std::array<std::uint8_t, 16> ones{};
    ones.fill(0xFF);
    EXPECT_EQ(UUID::fromRandomBytes(ones).string(), "FFFFFFFF-FFFF-4FFF-BFFF-FFFFFFFFFFFF");
}

}  // namespace
}  // namespace marrowby
