// SPDX-License-Identifier: Apache-2.0
#include "Simulation/Scenes/Movement.h"

#include "Simulation/Scenes/Chance.h"

#include <algorithm>
#include <cmath>
#include <numbers>

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

float eased(float t) {
    return t * t * t * (t * (t * 6 - 15) + 10);
}

Movement& Movement::stay(TimeInterval time) {
    return moveTo(keys_.back().place, time);
}

Movement& Movement::moveTo(const Placement& place, TimeInterval time) {
    keys_.push_back({.at = keys_.back().at + time, .place = place});
    return *this;
}

Movement& Movement::sway(const Placement& reach, TimeInterval period) {
    waves_.push_back({.reach = reach, .period = period});
    return *this;
}

Movement& Movement::tremble(std::uint64_t seed, float amount) {
    Chance chance(seed);
    const auto some = [&](double reach) {
        return static_cast<float>(chance.between(-reach, reach)) * amount;
    };
    for (const double period : {4.1, 1.7, 0.73}) {
        const double part = period / 4;
        waves_.push_back(
            {.reach = {.position = {some(0.006 * part), some(0.005 * part), some(0.010 * part)},
                       .yaw = some(0.025 * part),
                       .pitch = some(0.020 * part),
                       .roll = some(0.020 * part)},
             .period = TimeInterval(period * chance.between(0.8, 1.2)),
             .phase = chance.between(0, 1)});
    }
    return *this;
}

Placement Movement::at(TimeInterval time) const {
    const auto next = std::ranges::find_if(keys_, [time](const Key& key) { return key.at > time; });
    Placement place;
    if (next == keys_.begin()) {
        place = keys_.front().place;
    } else if (next == keys_.end()) {
        place = keys_.back().place;
    } else {
        const Key& before = *(next - 1);
        const float part = eased(static_cast<float>((time - before.at) / (next->at - before.at)));
        place = before.place * (1 - part) + next->place * part;
    }
    for (const Wave& wave : waves_) {
        const double turn = time / wave.period + wave.phase;
        place = place + wave.reach * static_cast<float>(std::sin(turn * 2 * std::numbers::pi));
    }
    return place;
}

}  // namespace marrowby
