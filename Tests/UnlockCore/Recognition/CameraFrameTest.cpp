// SPDX-License-Identifier: Apache-2.0
#include "Tests/Fakes/FakeImaging.h"
#include "UnlockCore/Recognition/CameraFrame.h"

#include <cmath>
#include <memory>
#include <optional>

#include <gtest/gtest.h>

namespace marrowby {
namespace {

/// 640 × 360 out of 1920 × 1080.
CameraFrame frame(const FakeImaging& imaging) {
    auto source = std::make_shared<FakeSourceImage>(1920, 1080);
    CameraFrame frame{.id = 1,
                      .image = *imaging.render(*source, {0, 0, 1920, 1080}, 1.0 / 3),
                      .source = source,
                      .sourceSize = source->extent(),
                      .timestamp = {}};
    imaging.renderings.clear();
    return frame;
}

TEST(FaceCrop, IsCutWithRoomFromTheFullPicture) {
    const FakeImaging imaging;
    const CameraFrame picture = frame(imaging);
    // 100 × 120 at (200, 60) grows by 15 and 18 on each side, times three, from the bottom.
    const auto crop = faceCrop(picture, {200, 60, 100, 120}, 234, imaging);
    ASSERT_TRUE(crop);
    ASSERT_EQ(imaging.renderings.size(), 1U);
    const auto [rect, scale] = imaging.renderings[0];
    EXPECT_NEAR(rect.x, 555, 1e-9);
    EXPECT_NEAR(rect.y, 486, 1e-9);
    EXPECT_NEAR(rect.width, 390, 1e-9);
    EXPECT_NEAR(rect.height, 468, 1e-9);
    EXPECT_NEAR(scale, 0.5, 1e-9);
    EXPECT_EQ(crop->height(), 234);

    (void)faceCrop(picture, {200, 60, 100, 120}, 2000, imaging);
    EXPECT_EQ(imaging.renderings.back().scale, 1) << "never enlarged";
}

TEST(FaceCrop, EndsAtThePicturesEdge) {
    const FakeImaging imaging;
    const CameraFrame picture = frame(imaging);
    ASSERT_TRUE(faceCrop(picture, {-50, 300, 100, 100}, 448, imaging));
    const Rect crop = imaging.renderings.back().crop;
    EXPECT_EQ(crop.x, 0);
    EXPECT_EQ(crop.y, 0);
    EXPECT_NEAR(crop.width, 195, 1e-9);
    EXPECT_NEAR(crop.height, 225, 1e-9);
    for (const double x : {700.0, std::nan("")})
        EXPECT_FALSE(faceCrop(picture, {x, 10, 40, 40}, 448, imaging));
}

}  // namespace
}  // namespace marrowby
