// SPDX-License-Identifier: Apache-2.0
#include "Simulation/People/Vector3.h"

#include <algorithm>
#include <cmath>

namespace marrowby {

Rotation Rotation::fromAngles(const Angles& angles) {
    const float cy = std::cos(angles.yaw);
    const float sy = std::sin(angles.yaw);
    const float cp = std::cos(angles.pitch);
    const float sp = std::sin(angles.pitch);
    const float cr = std::cos(angles.roll);
    const float sr = std::sin(angles.roll);
    const Rotation yaw{.x = {cy, 0, sy}, .z = {-sy, 0, cy}};
    const Rotation pitch{.y = {0, cp, -sp}, .z = {0, sp, cp}};
    const Rotation roll{.x = {cr, -sr, 0}, .y = {sr, cr, 0}};
    return yaw.after(pitch.after(roll));
}

Rotation Rotation::towards(const Vector3& d) {
    // https://en.wikipedia.org/wiki/Rodrigues%27_rotation_formula for the axis (0, 0, 1) × d.
    const float k = 1 / std::max(1e-6F, 1 + d.z);
    return {.x = {1 - k * d.x * d.x, -k * d.x * d.y, d.x},
            .y = {-k * d.x * d.y, 1 - k * d.y * d.y, d.y},
            .z = {-d.x, -d.y, d.z}};
}

Rotation::Angles Rotation::angles() const {
    return {.yaw = std::atan2(x.z, z.z),
            .pitch = std::asin(std::clamp(-y.z, -1.F, 1.F)),
            .roll = std::atan2(y.x, y.y)};
}

Rotation Rotation::inverse() const {
    return {.x = {x.x, y.x, z.x}, .y = {x.y, y.y, z.y}, .z = {x.z, y.z, z.z}};
}

Rotation Rotation::after(const Rotation& first) const {
    const Rotation columns = first.inverse();
    const auto row = [&](const Vector3& r) {
        return Vector3{dot(r, columns.x), dot(r, columns.y), dot(r, columns.z)};
    };
    return {.x = row(x), .y = row(y), .z = row(z)};
}

}  // namespace marrowby
