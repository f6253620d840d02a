// SPDX-License-Identifier: Apache-2.0
#include "Platforms/macOS/Rules/VisionCorner.h"

#include <gtest/gtest.h>

namespace marrowby {
namespace {

TEST(VisionCorner, flipsBoxesAndPoints) {
    EXPECT_EQ(visioncorner::fromTopLeft({0.25, 0.5, 0.125, 0.375}),
              (Rect{0.25, 0.125, 0.125, 0.375}));
    EXPECT_EQ(visioncorner::fromTopLeft({60, 70}, 100), (Point{60, 30}));
}

}  // namespace
}  // namespace marrowby
