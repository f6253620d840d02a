// SPDX-License-Identifier: Apache-2.0
#include "UnlockCore/Liveness/NoseParallax.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

namespace marrowby {

namespace {

constexpr double radiansPerDegree = std::numbers::pi / 180;
constexpr double leastTurn = 10 * radiansPerDegree;
constexpr double mostDisagreement = 15 * radiansPerDegree;

/// Distance of the nose's tip before the eyes, in distances between the eyes: less than an average
/// adult's 0.65, so that small noses pass.
constexpr double noseLength = 0.5;

struct Turn {
    double reported;
    double byNose;
};

}  // namespace

NoseParallax NoseParallax::measure(std::span<const LivenessFrame> frames) {
    std::vector<Turn> turns;
    for (const LivenessFrame& frame : frames) {
        if (!frame.hasReliableLandmarks || !frame.yaw || !frame.noseOffsetRatio) continue;
        turns.push_back({*frame.yaw, std::atan(*frame.noseOffsetRatio / noseLength)});
    }
    double followed = 0;
    double signedSum = 0;
    int pairs = 0;
    for (std::size_t i = 0; i < turns.size(); ++i) {
        for (std::size_t j = 0; j < i; ++j) {
            const double reported = turns[i].reported - turns[j].reported;
            const double byNose = turns[i].byNose - turns[j].byNose;
            if (!(std::abs(reported) >= leastTurn)) continue;
            ++pairs;
            signedSum += byNose / reported;
            if (std::abs(std::abs(byNose) - std::abs(reported)) > mostDisagreement) continue;
            followed += std::min(1.0, std::abs(byNose / reported));
        }
    }
    if (pairs == 0) return {};
    return {.strength = followed / pairs, .direction = signedSum > 0 ? 1 : signedSum < 0 ? -1 : 0};
}

}  // namespace marrowby
