#pragma once

#include "UnlockCore/Liveness/CueReading.h"
#include "UnlockCore/Liveness/GlareSample.h"
#include "UnlockCore/Liveness/LivenessCue.h"
#include "UnlockCore/Liveness/LivenessFrame.h"
#include "UnlockCore/Liveness/MoireSample.h"

#include <map>
#include <optional>

namespace marrowby {

/// From measurements to readings. What is absent reads as two zeros.
namespace livenessscoring {

/// Nothing below 1 % of highlights, full at 8 %; spread evenly they count for 0.3 of a cluster.
/// Trusted from 50 pixels of width on, fully at 130.
[[nodiscard]] CueReading glossGlare(const std::optional<GlareSample>& sample);

/// Nothing below a contrast of 6, full at 18.
[[nodiscard]] CueReading moire(const std::optional<MoireSample>& sample);

[[nodiscard]] CueReading deviceDetected(std::optional<double> overlapFraction);

/// The newest frame's readings of the cues that one frame alone can show.
[[nodiscard]] std::map<LivenessCue, CueReading> readings(const LivenessFrame& newest);

}  // namespace livenessscoring

}  // namespace marrowby
