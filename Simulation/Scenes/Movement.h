// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Simulation/People/Vector3.h"
#include "UnlockCore/Foundation/Time.h"

#include <array>
#include <cstdint>
#include <vector>

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

/// From 0 to 1 as `t` goes, without a jerk at either end.
[[nodiscard]] float eased(float t);

/// A path from place to place along smooth curves, with swaying. A value.
class Movement {
  public:
    explicit Movement(const Placement& start) : keys_{{.at = {}, .place = start}} {}

    Movement& stay(TimeInterval time);
    /// Starts and arrives gently.
    Movement& moveTo(const Placement& place, TimeInterval time);
    /// On top of all else, `reach` to either side and back in every `period`.
    Movement& sway(const Placement& reach, TimeInterval period);
    /// The tremor of a hand or head held still: a few millimetres and hundredths of a radian times
    /// `amount`.
    Movement& tremble(std::uint64_t seed, float amount = 1);

    /// Clamped to the start and the end.
    [[nodiscard]] Placement at(TimeInterval time) const;

  private:
    struct Key {
        TimeInterval at{};
        Placement place = {};
    };
    struct Wave {
        Placement reach = {};
        TimeInterval period{};
        double phase = 0;
    };

    std::vector<Key> keys_;
    std::vector<Wave> waves_;
};

}  // namespace marrowby
