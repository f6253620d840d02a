#pragma once

#include "Rehearsal/People/Vector3.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace marrowby {

/// Small pieces that shapes and colours are put together from: signed distances (negative inside;
/// https://iquilezles.org/articles/distfunctions/), soft steps and noise.
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

/// 0…1, the same for the same cell.
inline float cellNoise(std::int32_t x, std::int32_t y, std::int32_t z, std::uint32_t seed) {
    std::uint32_t h = static_cast<std::uint32_t>(x) * 0x8da6b343U +
                      static_cast<std::uint32_t>(y) * 0xd8163841U +
                      static_cast<std::uint32_t>(z) * 0xcb1ab31fU + seed * 0x9e3779b9U;
    h ^= h >> 15U;
    h *= 0x2c1b3c6dU;
    h ^= h >> 12U;
    h *= 0x297a2d39U;
    h ^= h >> 15U;
    return static_cast<float>(h >> 8U) * 0x1p-24F;
}

/// 0…1, smooth, in waves of about two units.
inline float noise(const Vector3& p, std::uint32_t seed) {
    const Vector3 cell{std::floor(p.x), std::floor(p.y), std::floor(p.z)};
    Vector3 t = p - cell;
    t = t * t * (Vector3{3, 3, 3} - t * 2);
    const auto x = static_cast<std::int32_t>(cell.x);
    const auto y = static_cast<std::int32_t>(cell.y);
    const auto z = static_cast<std::int32_t>(cell.z);
    const auto edge = [&](std::int32_t dy, std::int32_t dz) {
        return std::lerp(cellNoise(x, y + dy, z + dz, seed), cellNoise(x + 1, y + dy, z + dz, seed),
                         t.x);
    };
    return std::lerp(std::lerp(edge(0, 0), edge(1, 0), t.y), std::lerp(edge(0, 1), edge(1, 1), t.y),
                     t.z);
}

}  // namespace fields

}  // namespace marrowby
