#pragma once

#include "UnlockCore/Liveness/LivenessFrame.h"
#include "UnlockCore/Liveness/PlanarityResult.h"
#include "UnlockCore/Liveness/PlanarityTuning.h"

#include <optional>
#include <span>

namespace marrowby {

namespace planarity {

/// How one frame's landmarks lie against another's.
struct PairMeasurement {
    double ratio = 0;
    double residual = 0;
    double motion = 0;
};

/// Eyes, brows and lips lie nearly in one plane, which a robust homography carries from one frame
/// to the other; how far it leaves the nose from its place is the residual, and its part of the
/// face's median motion the ratio. Of a flat picture both are the landmarks' noise; of a head that
/// turns, the nose goes with a tenth to a third of the motion. Nothing for unreliable landmarks,
/// less motion than `motionGate` or more than one and a half eyes' distance, a face that grew or
/// shrank by over a twentieth, or where nothing can be fitted.
[[nodiscard]] std::optional<PairMeasurement> measure(const LivenessFrame& from,
                                                     const LivenessFrame& to, double motionGate);

/// Oldest frame first.
[[nodiscard]] PlanarityResult evaluate(std::span<const LivenessFrame> frames,
                                       const PlanarityTuning& tuning);

/// The verdict about measured pairs.
[[nodiscard]] PlanarityResult judge(std::span<const PairMeasurement> pairs,
                                    const PlanarityTuning& tuning);

}  // namespace planarity

}  // namespace marrowby
