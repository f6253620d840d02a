#include "Rehearsal/Scenes/Placement.h"

#include <cmath>

namespace marrowby {

std::array<Vector3, 3> axes(const Placement& placement) {
    const auto turned = [&](const Vector3& v) {
        const float sinRoll = std::sin(placement.roll);
        const float cosRoll = std::cos(placement.roll);
        const Vector3 rolled{v.x * cosRoll + v.y * sinRoll, -v.x * sinRoll + v.y * cosRoll, v.z};
        const float sinPitch = std::sin(placement.pitch);
        const float cosPitch = std::cos(placement.pitch);
        const Vector3 pitched{rolled.x, rolled.y * cosPitch - rolled.z * sinPitch,
                              rolled.y * sinPitch + rolled.z * cosPitch};
        const float sinYaw = std::sin(placement.yaw);
        const float cosYaw = std::cos(placement.yaw);
        return Vector3{pitched.x * cosYaw - pitched.z * sinYaw, pitched.y,
                       pitched.x * sinYaw + pitched.z * cosYaw};
    };
    return {turned({1, 0, 0}), turned({0, 1, 0}), turned({0, 0, 1})};
}

}  // namespace marrowby
