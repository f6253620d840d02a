#include "Tests/Fakes/FakeFaceVision.h"
#include "Tests/Fakes/FakeImaging.h"
#include "UnlockCore/Liveness/DeviceBezelDetector.h"

#include <gtest/gtest.h>

namespace marrowby {
namespace {

TEST(DeviceBezelDetector, takesTheLargestRectangle) {
    const auto image = *FakeImaging().render(FakeSourceImage(200, 100), {0, 0, 200, 100}, 1);
    FakeFaceVision vision;
    const Rect face{60, 20, 40, 40};
    const auto detect = [&](const Rect& box) {
        return devicebezeldetector::detect(image, box, vision).value();
    };
    EXPECT_FALSE(detect(face));
    EXPECT_EQ(vision.lastRectangleRequest, (RectangleRequest{0.6, 0.15, 3, 0.35, 1.0, 30}));

    vision.boxes = {{0, 0, 0.1, 0.1}, {0.25, 0.5, 0.25, 0.5}, {0.5, 0.5, 0.25, 0.5}};
    const auto found = detect(face);
    EXPECT_EQ(found->rectangle, (Rect{50, 0, 50, 50})) << "the first of equal ones";
    EXPECT_EQ(found->faceOverlapFraction, 0.75);
    EXPECT_EQ(detect({0, 90, 10, 5})->faceOverlapFraction, 0);
    EXPECT_FALSE(detect({60, 20, 0, 40})->faceOverlapFraction);

    vision.boxesFault = "busy";
    EXPECT_EQ(devicebezeldetector::detect(image, face, vision).error(), "busy");
}

}  // namespace
}  // namespace marrowby
