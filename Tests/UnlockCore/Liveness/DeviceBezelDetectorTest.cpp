// SPDX-License-Identifier: Apache-2.0
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

    vision.boxes = {{0, 0, 0.1, 0.1}, {0.25, 0, 0.25, 0.5}, {0.5, 0, 0.25, 0.5}};
    const auto found = detect(face);
    EXPECT_EQ(found->rectangle, (Rect{50, 0, 50, 50})) << "the first of equal ones";
    EXPECT_EQ(found->faceOverlapFraction, 0.75);
    EXPECT_EQ(detect({0, 90, 10, 5})->faceOverlapFraction, 0);
    EXPECT_FALSE(detect({60, 20, 0, 40})->faceOverlapFraction);

    vision.boxesFault = "busy";
    EXPECT_EQ(devicebezeldetector::detect(image, face, vision).error(), "busy");
}

TEST(DeviceBezelDetector, requiresTheWholeHeadAndRejectsFurniture) {
    const Rect face{100, 100, 80, 100};
    const Rect head = devicebezeldetector::head(face);
    EXPECT_EQ(head, (Rect{92, 70, 96, 138}));
    EXPECT_LT(devicebezeldetector::overlapFraction(head, {60, 85, 160, 200}), 0.9)
        << "a curtain rod across the hair";
    EXPECT_LT(devicebezeldetector::overlapFraction(head, {60, 60, 160, 140}), 0.95)
        << "a monitor that ends at the chin";
    EXPECT_EQ(devicebezeldetector::overlapFraction(head, {60, 60, 160, 200}), 1);

    const Size picture{640, 360};
    struct Case {
        const char* what;
        Rect rectangle;
        bool isHeldUp;
    };
    for (const Case& c :
         {Case{"a tablet", {50, 50, 200, 250}, true}, Case{"a window", {0, 20, 330, 250}, false},
          Case{"a tablet across", {50, 70, 250, 190}, true},
          Case{"a monitor's edge and a desk's", {30, 40, 250, 204}, false},
          Case{"a print that reaches below", {60, 40, 200, 320}, true},
          Case{"a wide door", {20, 40, 260, 320}, false},
          Case{"a narrow door", {60, 120, 208, 240}, false},
          Case{"shoulders in a door", {60, 150, 200, 210}, false}}) {
        EXPECT_EQ(devicebezeldetector::isHeldUp(c.rectangle, face, picture), c.isHeldUp) << c.what;
    }
}

}  // namespace
}  // namespace marrowby
