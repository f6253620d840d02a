// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cmath>

namespace marrowby {

/// Three numbers: a point, a direction or a colour.
struct Vector3 {
    float x = 0;
    float y = 0;
    float z = 0;

    friend constexpr bool operator==(const Vector3&, const Vector3&) = default;
};

constexpr Vector3 operator+(const Vector3& a, const Vector3& b) {
    return {a.x + b.x, a.y + b.y, a.z + b.z};
}
constexpr Vector3 operator-(const Vector3& a, const Vector3& b) {
    return {a.x - b.x, a.y - b.y, a.z - b.z};
}
constexpr Vector3 operator*(const Vector3& a, const Vector3& b) {
    return {a.x * b.x, a.y * b.y, a.z * b.z};
}
constexpr Vector3 operator*(const Vector3& a, float k) {
    return {a.x * k, a.y * k, a.z * k};
}
constexpr float dot(const Vector3& a, const Vector3& b) {
    return a.x * b.x + a.y * b.y + a.z * b.z;
}
constexpr Vector3 cross(const Vector3& a, const Vector3& b) {
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}
constexpr Vector3 mix(const Vector3& a, const Vector3& b, float t) {
    return a + (b - a) * t;
}
inline float length(const Vector3& a) {
    return std::sqrt(dot(a, a));
}
/// Of length 1; a vector of no length stays.
inline Vector3 normalized(const Vector3& a) {
    const float size = length(a);
    return size > 0 ? a * (1 / size) : a;
}

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
