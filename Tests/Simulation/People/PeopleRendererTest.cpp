// SPDX-License-Identifier: Apache-2.0
#include "Simulation/People/PeopleRenderer.h"

#include <array>

#include <gtest/gtest.h>

namespace marrowby {
namespace {

constexpr Vector3 place{.x = 0, .y = 0.02F, .z = 0.6F};

FaceTruth draw(const PersonPose& pose) {
    // Made once: slow.
    static const Person somebody(distinctPeople().front());
    LinearImage image(320, 240, Vector3{});
    return PeopleRenderer().draw(image, PinholeCamera::webcam(320, 240), somebody, pose);
}

TEST(PeopleRenderer, reportsTheHeadsAngles) {
    for (const Vector3& position : {place, Vector3{.x = -0.25F, .y = 0.1F, .z = 0.8F}}) {
        for (const auto& [yaw, pitch, roll] :
             {std::array{0.F, 0.F, 0.F}, std::array{0.4F, -0.2F, 0.F},
              std::array{-0.3F, 0.25F, 0.15F}}) {
            const FaceTruth truth = draw(facingCamera(position, yaw, pitch, roll));
            // The line goes to the face, the position is that of the unturned head.
            EXPECT_NEAR(truth.yaw, yaw, 0.08);
            EXPECT_NEAR(truth.pitch, pitch, 0.09);
            EXPECT_NEAR(truth.roll, roll, 0.06);
        }
    }
    const auto nose = [&](float yaw, float pitch) {
        const FaceTruth truth = draw(facingCamera(place, yaw, pitch));
        return Point{truth.points[54].x - (truth.points[0].x + truth.points[32].x) / 2,
                     truth.points[54].y - (truth.points[0].y + truth.points[32].y) / 2};
    };
    EXPECT_GT(nose(0.3F, 0).x, nose(0, 0).x + 5) << "the person's left is the picture's right";
    EXPECT_LT(nose(0, -0.3F).y, nose(0, 0).y - 5) << "negative is up";
    const FaceTruth tilted = draw(facingCamera(place, 0, 0, 0.2F));
    EXPECT_LT(tilted.pupils[1].y, tilted.pupils[0].y) << "anticlockwise";
}

}  // namespace
}  // namespace marrowby
