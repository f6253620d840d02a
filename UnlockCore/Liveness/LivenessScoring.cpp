#include "UnlockCore/Liveness/LivenessScoring.h"

#include <algorithm>

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

std::map<LivenessCue, CueReading> readings(const LivenessFrame& newest) {
    return {{LivenessCue::moire, moire(newest.moire)},
            {LivenessCue::glossGlare, glossGlare(newest.glare)},
            {LivenessCue::deviceDetected, deviceDetected(newest.deviceOverlapFraction)}};
}

}  // namespace marrowby::livenessscoring
