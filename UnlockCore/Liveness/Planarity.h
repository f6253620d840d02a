// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Liveness/LivenessFrame.h"
#include "UnlockCore/Liveness/LivenessMode.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

namespace marrowby {

/// Thresholds for judging whether a face moves as one plane. Lengths are in distances between the
/// eyes.
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
    /// How many frames, spread over the scan, are paired with each other.
    std::int64_t sampledFrames = 0;

    friend bool operator==(const PlanarityTuning&, const PlanarityTuning&) = default;
};

/// The lock screen's tuning in a mode.
[[nodiscard]] PlanarityTuning planarityTuning(LivenessMode mode);

/// Whether a face moved as one plane, as a picture does, or as a head with a nose in front. The
/// medians over the measured pairs are absent without any.
struct PlanarityResult {
    enum class Verdict { noEvidence, planar, depth, unclear };

    std::int64_t pairs = 0;
    /// The nose's displacement against the plane of the face, relative to the face's motion.
    std::optional<double> ratio;
    /// The same displacement in distances between the eyes.
    std::optional<double> residual;
    /// The face's motion in distances between the eyes.
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

/// Fits a robust homography to eyes, brows and lips, which lie nearly in one plane. The residual is
/// the nose's distance from where it maps, the ratio that distance over the face's median motion:
/// landmark noise for a flat picture, a tenth to a third for a turning head. Nothing for unreliable
/// landmarks, less motion than `motionGate` or more than one and a half eyes' distance, a face that
/// grew or shrank by over a twentieth, or where nothing can be fitted.
[[nodiscard]] std::optional<PairMeasurement> measure(const LivenessFrame& from,
                                                     const LivenessFrame& to, double motionGate);

/// Oldest frame first.
[[nodiscard]] PlanarityResult evaluate(std::span<const LivenessFrame> frames,
                                       const PlanarityTuning& tuning);

[[nodiscard]] PlanarityResult judge(std::span<const PairMeasurement> pairs,
                                    const PlanarityTuning& tuning);

}  // namespace planarity

}  // namespace marrowby
