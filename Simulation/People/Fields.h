// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Simulation/People/Vector3.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace marrowby {

/// Building blocks of shapes and colours: signed distances (negative inside;
/// https://iquilezles.org/articles/distfunctions/), smooth steps and noise.
namespace fields {

inline float smoothstep(float from, float to, float x) {
    const float t = std::clamp((x - from) / (to - from), 0.F, 1.F);
    return t * t * (3 - 2 * t);
}

/// 1 at 0, 0 beyond ±1.
inline float bump(float x) {
    const float t = std::max(0.F, 1 - x * x);
    return t * t;
}

/// The union of two bodies with a fillet of about `k`.
inline float joined(float a, float b, float k) {
    const float h = std::max(k - std::abs(a - b), 0.F) / k;
    return std::min(a, b) - h * h * k * 0.25F;
}

/// `a` without `b`, the edge rounded by about `k`.
inline float carved(float a, float b, float k) {
    const float h = std::max(k - std::abs(a + b), 0.F) / k;
    return std::max(a, -b) + h * h * k * 0.25F;
}

inline float ellipsoid(const Vector3& p, const Vector3& centre, const Vector3& radii) {
    const Vector3 q = p - centre;
    const Vector3 a{q.x / radii.x, q.y / radii.y, q.z / radii.z};
    const Vector3 b{a.x / radii.x, a.y / radii.y, a.z / radii.z};
    const float k0 = length(a);
    const float k1 = length(b);
    return k1 > 1e-6F ? k0 * (k0 - 1) / k1 : -std::min({radii.x, radii.y, radii.z});
}

/// A capsule whose radius goes from `ra` at `a` to `rb` at `b`.
inline float capsule(const Vector3& p, const Vector3& a, const Vector3& b, float ra, float rb) {
    const Vector3 pa = p - a;
    const Vector3 ba = b - a;
    const float t = std::clamp(dot(pa, ba) / dot(ba, ba), 0.F, 1.F);
    return length(pa - ba * t) - (ra + (rb - ra) * t);
}

/// 0…1, smooth, in waves of about two units; repeats after 32. Seeds move it.
[[nodiscard]] float noise(const Vector3& p, std::uint32_t seed);

}  // namespace fields

}  // namespace marrowby
