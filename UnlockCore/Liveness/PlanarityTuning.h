#pragma once

#include "UnlockCore/Liveness/LivenessMode.h"

#include <cstdint>

namespace marrowby {

/// The bars of the judgement whether a face moves as one plane. Lengths are in parts of the
/// distance between the eyes.
struct PlanarityTuning {
    /// The least median motion of the landmarks for a pair of frames to be measured.
    double motionGate = 0;
    /// At or below both a face is flat.
    double planarRatio = 0;
    double planarResidual = 0;
    /// At or above both it has depth.
    double depthRatio = 0;
    double depthResidual = 0;
    /// Fewer measured pairs are no evidence.
    std::int64_t minimumPairs = 0;
    /// The least time between a pair's frames, seconds.
    double minimumSpan = 0;
    /// How many frames, spread over the look, are paired with each other.
    std::int64_t sampledFrames = 0;

    friend bool operator==(const PlanarityTuning&, const PlanarityTuning&) = default;
};

/// The tuning that the lock screen uses in a mode.
[[nodiscard]] PlanarityTuning planarityTuning(LivenessMode mode);

}  // namespace marrowby
