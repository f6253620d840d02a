// SPDX-License-Identifier: Apache-2.0
#include "UnlockCore/Liveness/LivenessScoring.h"

#include "UnlockCore/Liveness/NoseParallax.h"

#include <algorithm>
#include <numbers>
#include <vector>

namespace marrowby::livenessscoring {

namespace {

/// 0 at `from` or below, 1 at `from + span` or above.
template <typename Number>
Number ramp(Number value, Number from, Number span) {
    return std::clamp((value - from) / span, Number{0}, Number{1});
}

}  // namespace

CueReading glossGlare(const std::optional<GlareSample>& sample) {
    if (!sample) return {};
    const float amount = ramp(sample->specularFraction, 0.01F, 0.07F);
    const float cluster = ramp(sample->specularClusterRatio, 0.3F, 0.7F);
    return {.level = amount * (0.3F + 0.7F * cluster),
            .confidence = static_cast<float>(ramp(sample->cropPixelWidth, 50.0, 80.0))};
}

CueReading moire(const std::optional<MoireSample>& sample) {
    if (!sample) return {};
    return {.level = ramp(sample->peakContrast, 6.0F, 12.0F), .confidence = 1};
}

CueReading deviceDetected(std::optional<double> overlapFraction) {
    if (!overlapFraction) return {};
    return {.level = static_cast<float>(std::clamp(*overlapFraction, 0.0, 1.0)), .confidence = 1};
}

CueReading planar(const PlanarityResult& planarity, const PlanarityTuning& tuning) {
    if (planarity.pairs < tuning.minimumPairs || !planarity.ratio || !planarity.residual) return {};
    if (!(*planarity.residual <= tuning.planarResidual)) return {.level = 0, .confidence = 1};
    const double level = 1 - (*planarity.ratio - 0.5 * tuning.planarRatio) / tuning.planarRatio;
    return {.level = static_cast<float>(std::clamp(level, 0.0, 1.0)), .confidence = 1};
}

CueReading headTurn(std::span<const LivenessFrame> frames, PlanarityResult::Verdict planarity) {
    std::vector<double> yaws;
    for (const LivenessFrame& frame : frames) {
        if (frame.yaw) yaws.push_back(*frame.yaw);
    }
    if (yaws.size() <= 2) return {};
    const auto [least, most] = std::ranges::minmax(yaws);
    const double range = (most - least) * 180 / std::numbers::pi;
    const bool turned =
        range >= 10 && planarity != PlanarityResult::Verdict::planar &&
        (NoseParallax::measure(frames).passes() || planarity == PlanarityResult::Verdict::depth);
    return {.level = turned ? 1.0F : 0.0F, .confidence = 1};
}

std::map<LivenessCue, CueReading> readings(std::span<const LivenessFrame> frames,
                                           const PlanarityResult& planarity,
                                           const PlanarityTuning& tuning) {
    const LivenessFrame newest = frames.empty() ? LivenessFrame{} : frames.back();
    return {{LivenessCue::planar, planar(planarity, tuning)},
            {LivenessCue::moire, moire(newest.moire)},
            {LivenessCue::glossGlare, glossGlare(newest.glare)},
            {LivenessCue::deviceDetected, deviceDetected(newest.deviceOverlapFraction)},
            {LivenessCue::headTurn, headTurn(frames, planarity.verdict)}};
}

}  // namespace marrowby::livenessscoring
