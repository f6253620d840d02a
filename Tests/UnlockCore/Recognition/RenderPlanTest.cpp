// SPDX-License-Identifier: Apache-2.0
#include "UnlockCore/Platform/Imaging.h"

#include <limits>

#include <gtest/gtest.h>

namespace marrowby {
namespace {

constexpr Size extent{1920, 1080};
constexpr double nan = std::numeric_limits<double>::quiet_NaN();

TEST(RenderPlan, takesWholePixelsInsideTheSource) {
    struct Case {
        Rect crop;
        double scale;
        RenderPlan plan;
    };
    for (const auto& [crop, scale, plan] : {
             Case{{0, 0, 1920, 1080}, 640.0 / 1920, {{0, 0, 1920, 1080}, 640, 360}},
             // Not scaled: as many pixels as are taken.
             Case{{10.4, 20.6, 100.2, 50}, 1, {{10, 21, 101, 50}, 101, 50}},
             // Scaled: as large as the part was before it was rounded.
             Case{{10.4, 20.6, 100.2, 50}, 0.75, {{10, 21, 101, 50}, 75, 37}},
             // Cut at the source's edges.
             Case{{-5, 1070, 20, 30}, 1, {{0, 1070, 15, 10}, 15, 10}},
             // Less than half a pixel is one, also at the far corner.
             Case{{1919.7, 0.1, 9, 0.1}, 1, {{1919, 0, 1, 1}, 1, 1}},
         }) {
        EXPECT_EQ(RenderPlan::make(extent, crop, scale), plan) << crop.x << " by " << scale;
    }
}

TEST(RenderPlan, refusesWhatCannotBeDrawn) {
    constexpr Rect whole{0, 0, 1920, 1080};
    for (const double scale : {0.0, -1.0, nan, std::numeric_limits<double>::infinity(), 1e9, 9.0}) {
        EXPECT_FALSE(RenderPlan::make(extent, whole, scale)) << scale;
    }
    for (const Rect& crop : {Rect{1920, 0, 5, 5}, Rect{0, 0, 0, 5}, Rect{nan, 0, 5, 5}}) {
        EXPECT_FALSE(RenderPlan::make(extent, crop, 1)) << crop.x;
    }
    EXPECT_FALSE(isDrawable(AffineTransform{.tx = nan}));
}

}  // namespace
}  // namespace marrowby
