// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Simulation/People/Vector3.h"

namespace marrowby {

/// Where somebody is and how the head is turned. The body stays upright and turns a little with it.
struct PersonPose {
    /// The middle between the eyes of a head that is not turned, in metres from the camera: x to
    /// the right of the picture, y down, z away. The head turns about the top of its neck.
    Vector3 position{.x = 0, .y = 0, .z = 0.6F};
    /// Radians about the camera's axes, first roll, then pitch, then yaw. Positive to the person's
    /// left, which is the right of the picture.
    float yaw = 0;
    /// Negative up.
    float pitch = 0;
    /// Positive anticlockwise in the picture.
    float roll = 0;
};

/// The pose of somebody at `position` who turns the head by these angles from the line to the
/// camera, as in `FaceTruth`.
[[nodiscard]] PersonPose facingCamera(const Vector3& position, float yaw = 0, float pitch = 0,
                                      float roll = 0);

/// The state of eyes and mouth.
struct Expression {
    /// 0 open … 1 shut.
    float blink = 0;
    /// Where the eyes look, in radians from straight out of the head: positive to the person's
    /// left, and down. Up to about 0.5.
    float gazeYaw = 0;
    float gazePitch = 0;
    /// 0 closed … 1 wide open (about 25 mm).
    float mouthOpening = 0;
};

}  // namespace marrowby
