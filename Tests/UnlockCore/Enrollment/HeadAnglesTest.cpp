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
        {{0, 0}, 1, {"centre"}},
        {{0.3F, 0}, 1, {"left"}},
        {{0.3F, -0.25F}, 1, {"top-left"}},
        {{0, -0.25F}, 1, {"top"}},
        {{-0.3F, -0.25F}, 1, {"top-right"}},
        {{-0.3F, 0}, 1, {"right"}},
        {{-0.3F, 0.25F}, 1, {"bottom-right"}},
        {{0, 0.25F}, 1, {"bottom"}},
        {{0.3F, 0.25F}, 1, {"bottom-left"}},
        // Every bound is outside its band.
        {{0.18F, 0}, 1, {}},
        {{-0.179F, 0.149F}, 1, {"centre"}},
        {{0, 0.15F}, 1, {}},
        {{0.24F, 0}, 1, {}},
        {{0.241F, 0.149F}, 1, {"left"}},
        {{-0.51F, 0}, 1, {}},
        {{-0.509F, 0}, 1, {"right"}},
        {{0, -0.17F}, 1, {}},
        {{0, 0.171F}, 1, {"bottom"}},
        {{0, -0.37F}, 1, {}},
        {{0, 0.369F}, 1, {"bottom"}},
        // Widened bands meet: near bounds move, the farthest do not.
        {{0.2F, 0}, 1.25F, {"centre", "left"}},
        {{0, -0.14F}, 1.25F, {"centre", "top"}},
        {{0.226F, 0}, 1.25F, {"left"}},
        {{0.17F, 0.12F}, 1.5F, {"centre", "left", "bottom", "bottom-left"}},
        {{0.511F, 0.1F}, 1.5F, {}},
    };
    for (const Case& each : cases) {
        EXPECT_EQ(posesHeld(each.head, each.tolerance), each.poses)
            << each.head.yaw << " " << each.head.pitch << " x " << each.tolerance;
    }
}

TEST(HeadAngles, toleranceGrowsAfterTwelveSeconds) {
    for (const EnrollmentPose pose : allEnrollmentPoses) {
        const bool lowDiagonal =
            pose == EnrollmentPose::bottomLeft || pose == EnrollmentPose::bottomRight;
        const float factor = lowDiagonal ? 1.5F : pose == EnrollmentPose::bottom ? 1.2F : 1;
        EXPECT_FLOAT_EQ(toleranceFactor(pose, TimeInterval(12)), factor) << rawValue(pose);
        EXPECT_FLOAT_EQ(toleranceFactor(pose, TimeInterval(12.01)), 1.25F * factor)
            << rawValue(pose);
    }
}

TEST(HeadAngles, overTurnTexts) {
    struct Case {
        HeadAngles head;
        std::optional<std::string_view> text;
    };
    const std::vector<Case> cases{
        {{0.509F, 0.369F}, std::nullopt},
        {{0.51F, 0}, "Not so far to the left"},
        {{-0.51F, 0}, "Not so far to the right"},
        {{0, -0.37F}, "Not so far up"},
        {{0, 0.37F}, "Not so far down"},
        {{0.6F, 0.1F}, "Not so far to the left"},
        {{-0.6F, -0.36F}, "Not so far to the right"},
        {{-0.5F, 0.4F}, "Not so far down"},
        {{0.6F, -0.4F}, "Not quite so far"},
        {{-0.51F, 0.37F}, "Not quite so far"},
    };
    for (const Case& each : cases) {
        EXPECT_EQ(overTurnText(each.head), each.text) << each.head.yaw << " " << each.head.pitch;
    }
}

TEST(HeadAngles, guideTurnsClockwiseFromUp) {
    struct Case {
        EnrollmentPose pose;
        HeadAngles head;
        double degrees;
    };
    const std::vector<Case> cases{
        {EnrollmentPose::top, {0, -0.17F}, 0},
        {EnrollmentPose::topRight, {-0.24F, -0.17F}, 45},
        {EnrollmentPose::right, {-0.24F, 0}, 90},
        {EnrollmentPose::bottomRight, {-0.24F, 0.17F}, 135},
        {EnrollmentPose::bottom, {0, 0.17F}, 180},
        {EnrollmentPose::left, {0.24F, 0}, 270},
        {EnrollmentPose::topLeft, {0.24F, -0.17F}, 315},
        // It follows the head, not the pose.
        {EnrollmentPose::top, {-0.24F, 0}, 90},
        {EnrollmentPose::center, {-0.24F, 0}, 0},
        // A head hardly turned has no direction; a pose that is eased needs less of a turn.
        {EnrollmentPose::right, {-0.035F, 0}, 0},
        {EnrollmentPose::right, {-0.037F, 0}, 90},
        {EnrollmentPose::bottomRight, {-0.025F, 0}, 90},
        {EnrollmentPose::bottom, {-0.031F, 0}, 90},
        {EnrollmentPose::bottom, {-0.029F, 0}, 0},
    };
    for (const Case& each : cases) {
        EXPECT_NEAR(guideDirection(each.pose, each.head), each.degrees, 1e-4)
            << rawValue(each.pose) << " " << each.head.yaw << " " << each.head.pitch;
    }
}

}  // namespace
}  // namespace marrowby
