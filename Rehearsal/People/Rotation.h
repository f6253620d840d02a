#pragma once

#include "Rehearsal/People/Vector3.h"

namespace marrowby {

/// A turn about the origin, as the three rows of its matrix.
struct Rotation {
    Vector3 x{.x = 1, .y = 0, .z = 0};
    Vector3 y{.x = 0, .y = 1, .z = 0};
    Vector3 z{.x = 0, .y = 0, .z = 1};

    struct Angles {
        float yaw;
        float pitch;
        float roll;
    };

    /// Ry(yaw) Rx(pitch) Rz(roll).
    [[nodiscard]] static Rotation fromAngles(const Angles& angles);
    /// The smallest one that brings (0, 0, 1) to this direction of length 1.
    [[nodiscard]] static Rotation towards(const Vector3& direction);

    [[nodiscard]] Angles angles() const;
    [[nodiscard]] Rotation inverse() const;
    [[nodiscard]] Vector3 apply(const Vector3& p) const {
        return {dot(x, p), dot(y, p), dot(z, p)};
    }
    /// This one after `first`.
    [[nodiscard]] Rotation after(const Rotation& first) const;
};

}  // namespace marrowby
