#pragma once

#include "UnlockCore/Liveness/LivenessFrame.h"
#include "UnlockCore/Liveness/LivenessMode.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

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

/// Whether a face moved as one plane, as a picture does, or as a head with a nose in front. The
/// medians over the measured pairs are absent without any.
struct PlanarityResult {
    enum class Verdict { noEvidence, planar, depth, unclear };

    std::int64_t pairs = 0;
    /// The nose's displacement against the plane of the face, relative to the face's motion.
    std::optional<double> ratio;
    /// The same displacement in parts of the distance between the eyes.
    std::optional<double> residual;
    /// The face's motion in parts of the distance between the eyes.
    std::optional<double> motion;
    Verdict verdict = Verdict::noEvidence;

    friend bool operator==(const PlanarityResult&, const PlanarityResult&) = default;
};

[[nodiscard]] constexpr std::string_view rawValue(PlanarityResult::Verdict verdict) {
    switch (verdict) {
        case PlanarityResult::Verdict::noEvidence:
            return "noEvidence";
        case PlanarityResult::Verdict::planar:
            return "planar";
        case PlanarityResult::Verdict::depth:
            return "depth";
        case PlanarityResult::Verdict::unclear:
            return "unclear";
    }
    return {};
}

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
