// SPDX-License-Identifier: Apache-2.0
#include "Simulation/Scenes/Sheet.h"

#include <cmath>

namespace marrowby {

PlacedSheet::PlacedSheet(const Sheet& sheet, const Placement& placement)
    : sheet_(sheet), middle_(placement.position), axes_(axes(placement)) {}

std::optional<PlacedSheet::Hit> PlacedSheet::hit(const Vector3& direction) const {
    const auto& [right, down, away] = axes_;
    if (sheet_.bend == 0) {
        const float steepness = dot(direction, away);
        // Only its front is drawn.
        if (steepness <= 1e-4F) return std::nullopt;
        const Vector3 place = direction * (dot(middle_, away) / steepness) - middle_;
        return Hit{.u = dot(place, right), .v = dot(place, down), .normal = away * -1};
    }
    // In the sheet's own axes, seen from above: a circle that touches the sheet's middle.
    const float radius = 1 / sheet_.bend;
    const float startX = -dot(middle_, right);
    const float startZ = -dot(middle_, away) - radius;
    const float stepX = dot(direction, right);
    const float stepZ = dot(direction, away);
    const float a = stepX * stepX + stepZ * stepZ;
    const float b = startX * stepX + startZ * stepZ;
    const float inside = b * b - a * (startX * startX + startZ * startZ - radius * radius);
    if (inside < 0 || a <= 0) return std::nullopt;
    const float t = (-b - std::copysign(std::sqrt(inside), radius)) / a;
    const float x = startX + t * stepX;
    const float z = startZ + t * stepZ;
    if (t <= 0) return std::nullopt;
    const float angle = std::atan2(x / radius, -z / radius);
    return Hit{.u = angle * radius,
               .v = -dot(middle_, down) + t * dot(direction, down),
               .normal = right * (x / radius) + away * (z / radius)};
}

Vector3 PlacedSheet::at(float u, float v) const {
    const auto& [right, down, away] = axes_;
    float x = u;
    float z = 0;
    if (sheet_.bend != 0) {
        const float radius = 1 / sheet_.bend;
        x = radius * std::sin(u / radius);
        z = radius * (1 - std::cos(u / radius));
    }
    return middle_ + right * x + down * v + away * z;
}

Point PlacedSheet::project(const PinholeCamera& camera, float u, float v) const {
    const Vector3 place = at(u, v);
    return {.x = camera.centreX + camera.focalLength * double{place.x / place.z},
            .y = camera.centreY + camera.focalLength * double{place.y / place.z}};
}

std::array<Point, 4> PlacedSheet::corners(const PinholeCamera& camera) const {
    const float u = sheet_.width / 2;
    const float v = sheet_.height / 2;
    return {project(camera, -u, -v), project(camera, u, -v), project(camera, u, v),
            project(camera, -u, v)};
}

}  // namespace marrowby
