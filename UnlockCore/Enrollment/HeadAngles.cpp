// SPDX-License-Identifier: Apache-2.0
#include "UnlockCore/Enrollment/HeadAngles.h"

#include "UnlockCore/Foundation/Fatal.h"

#include <cmath>
#include <numbers>

namespace marrowby {

namespace {

constexpr TimeInterval patience{12};
constexpr float impatientFactor = 1.25F;

constexpr float straightYaw = 0.18F;
constexpr float straightPitch = 0.15F;
constexpr float turnedYaw = 0.24F;
constexpr float turnedPitch = 0.17F;
constexpr float farthestYaw = 0.51F;
constexpr float farthestPitch = 0.37F;

/// Within this part of a full turn the guide has no direction.
constexpr double guideDeadZone = 0.15;

/// Where a pose wants the head on one axis: 1 to the user's right or up.
struct Aim {
    int right = 0;
    int up = 0;
};

Aim aim(EnrollmentPose pose) {
    switch (pose) {
        case EnrollmentPose::center:
            return {.right = 0, .up = 0};
        case EnrollmentPose::left:
            return {.right = -1, .up = 0};
        case EnrollmentPose::topLeft:
            return {.right = -1, .up = 1};
        case EnrollmentPose::top:
            return {.right = 0, .up = 1};
        case EnrollmentPose::topRight:
            return {.right = 1, .up = 1};
        case EnrollmentPose::right:
            return {.right = 1, .up = 0};
        case EnrollmentPose::bottomRight:
            return {.right = 1, .up = -1};
        case EnrollmentPose::bottom:
            return {.right = 0, .up = -1};
        case EnrollmentPose::bottomLeft:
            return {.right = -1, .up = -1};
    }
    fatal("not an enrolment pose");
}

/// Looking down is harder to see and harder to do.
float easing(EnrollmentPose pose) {
    const Aim wanted = aim(pose);
    if (wanted.up >= 0) return 1;
    return wanted.right != 0 ? 1.5F : 1.2F;
}

/// `angle` grows the way that `direction` is positive.
bool isWithin(float angle, int direction, float straight, float turned, float farthest,
              float tolerance) {
    if (direction == 0) return std::abs(angle) < straight * tolerance;
    const float turn = direction > 0 ? angle : -angle;
    return turn > turned / tolerance && turn < farthest;
}

}  // namespace

float toleranceFactor(EnrollmentPose pose, TimeInterval wantedFor) {
    return (wantedFor > patience ? impatientFactor : 1) * easing(pose);
}

bool isHeld(EnrollmentPose pose, HeadAngles head, float tolerance) {
    const Aim wanted = aim(pose);
    return isWithin(-head.yaw, wanted.right, straightYaw, turnedYaw, farthestYaw, tolerance) &&
           isWithin(-head.pitch, wanted.up, straightPitch, turnedPitch, farthestPitch, tolerance);
}

std::optional<Phrase> overTurnText(HeadAngles head) {
    const float yaw = std::abs(head.yaw) / farthestYaw;
    const float pitch = std::abs(head.pitch) / farthestPitch;
    if (yaw < 1 && pitch < 1) return std::nullopt;
    if (yaw >= 1 && pitch >= 1) return Phrase("Not quite so far");
    if (pitch > yaw) return head.pitch < 0 ? Phrase("Not so far up") : Phrase("Not so far down");
    return head.yaw > 0 ? Phrase("Not so far to the left") : Phrase("Not so far to the right");
}

double guideDirection(EnrollmentPose pose, HeadAngles head) {
    if (pose == EnrollmentPose::center) return 0;
    const double ease = easing(pose);
    const double right = -double{head.yaw} * ease / turnedYaw;
    const double up = -double{head.pitch} * ease / turnedPitch;
    if (std::hypot(right, up) <= guideDeadZone) return 0;
    const double degrees = std::atan2(right, up) * 180 / std::numbers::pi;
    return degrees < 0 ? degrees + 360 : degrees;
}

}  // namespace marrowby
