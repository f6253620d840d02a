#pragma once

#include "Rehearsal/People/Vector3.h"

#include <array>

namespace marrowby {

/// Where something is and how it is turned, as PersonPose has it: metres from the camera, x to the
/// right of the picture, y down, z away; what is not turned faces the camera.
struct Placement {
    Vector3 position{.x = 0, .y = 0, .z = 0.6F};
    float yaw = 0;
    float pitch = 0;
    float roll = 0;

    friend Placement operator+(const Placement& a, const Placement& b) {
        return {.position = a.position + b.position,
                .yaw = a.yaw + b.yaw,
                .pitch = a.pitch + b.pitch,
                .roll = a.roll + b.roll};
    }
    friend Placement operator*(const Placement& a, float k) {
        return {
            .position = a.position * k, .yaw = a.yaw * k, .pitch = a.pitch * k, .roll = a.roll * k};
    }
};

/// The thing's own axes in the camera's: its right, its down, and away from the side that is seen.
[[nodiscard]] std::array<Vector3, 3> axes(const Placement& placement);

}  // namespace marrowby
