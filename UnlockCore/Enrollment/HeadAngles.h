// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Enrollment/EnrollmentPose.h"
#include "UnlockCore/Foundation/Phrase.h"
#include "UnlockCore/Foundation/Time.h"

#include <optional>
#include <string_view>

namespace marrowby {

/// Which way a head points, in radians: yaw positive to the person's own left, pitch negative up.
struct HeadAngles {
    float yaw = 0;
    float pitch = 0;
};

/// The factor that widens a pose's bands after it has been asked for that long; 1 at first.
[[nodiscard]] float toleranceFactor(EnrollmentPose pose, TimeInterval wantedFor);

/// Whether the head is in the pose, its bands widened by `tolerance`.
[[nodiscard]] bool isHeld(EnrollmentPose pose, HeadAngles head, float tolerance);

/// What to say to a head that is turned further than any pose asks for.
[[nodiscard]] std::optional<Phrase> overTurnText(HeadAngles head);

/// Where the guide on the screen points: the way the head is turned, in degrees from 0 for up,
/// clockwise (90 is right, 180 down, 270 left) in the mirrored picture that the user sees, where
/// their own right is on the right. 0 too for the centre pose and for a head that is not yet
/// turned.
[[nodiscard]] double guideDirection(EnrollmentPose pose, HeadAngles head);

}  // namespace marrowby
