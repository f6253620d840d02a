// SPDX-License-Identifier: Apache-2.0
#include "Simulation/People/PersonPose.h"

#include "Simulation/People/Vector3.h"

namespace marrowby {

PersonPose facingCamera(const Vector3& position, float yaw, float pitch, float roll) {
    const Vector3 back = normalized({-position.x, position.y, position.z});
    const auto angles =
        Rotation::towards(back).after(Rotation::fromAngles({yaw, pitch, roll})).angles();
    return {.position = position, .yaw = angles.yaw, .pitch = angles.pitch, .roll = angles.roll};
}

}  // namespace marrowby
