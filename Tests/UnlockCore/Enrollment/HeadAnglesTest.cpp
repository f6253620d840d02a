// SPDX-License-Identifier: Apache-2.0
#include "UnlockCore/Enrollment/HeadAngles.h"

#include <algorithm>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace marrowby {
namespace {

/// The poses, by stored name, that a head at these angles is in.
std::vector<std::string> posesHeld(HeadAngles head, float tolerance) {
    std::vector<std::string> held;
    for (const EnrollmentPose pose : allEnrollmentPoses) {
        if (isHeld(pose, head, tolerance)) held.emplace_back(rawValue(pose));
    }
    return held;
}

TEST(HeadAngles, bandsOfThePoses) {
    struct Case {
        HeadAngles head;
        float tolerance = 1;
        std::vector<std::string> poses;
    };
    const std::vector<Case> cases{
        // Every bound is outside its band.
        {{0.18F, 0}, 1, {}},
        {{-0.179F, 0.149F}, 1, {"centre"}},
        {{0, 0.15F}, 1, {}},
        {{0.24F, 0}, 1, {}},
        {{0.241F, 0.149F}, 1, {"left"}},
        {{-0.51F, 0}, 1, {}},
        {{0, -0.17F}, 1, {}},
        {{0, 0.171F}, 1, {"bottom"}},
        {{0, -0.37F}, 1, {}},
        {{0, 0.369F}, 1, {"bottom"}},
        // Widened bands meet: near bounds move, the farthest do not.
        {{0.2F, 0}, 1.25F, {"centre", "left"}},
        {{0.17F, 0.12F}, 1.5F, {"centre", "left", "bottom", "bottom-left"}},
        {{0.511F, 0.1F}, 1.5F, {}},
    };
    for (const Case& each : cases) {
        EXPECT_EQ(posesHeld(each.head, each.tolerance), each.poses)
            << each.head.yaw << " " << each.head.pitch << " x " << each.tolerance;
    }
}

TEST(HeadAngles, toleranceGrowsAfterTwelveSecondsAndDownwards) {
    const TimeInterval patience(12);
    EXPECT_FLOAT_EQ(toleranceFactor(EnrollmentPose::topLeft, patience), 1);
    EXPECT_FLOAT_EQ(toleranceFactor(EnrollmentPose::bottom, patience), 1.2F);
    EXPECT_FLOAT_EQ(toleranceFactor(EnrollmentPose::bottomRight, patience * 1.01), 1.25F * 1.5F);
}

}  // namespace
}  // namespace marrowby
