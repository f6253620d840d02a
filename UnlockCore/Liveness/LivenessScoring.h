// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Liveness/LivenessCue.h"
#include "UnlockCore/Liveness/LivenessFrame.h"
#include "UnlockCore/Liveness/Planarity.h"
#include "UnlockCore/Liveness/ScreenCues.h"

#include <map>
#include <optional>
#include <span>

namespace marrowby {

/// From measurements to readings. What is absent reads as two zeros.
namespace livenessscoring {

/// Nothing below 1 % of highlights, full at 8 %; spread evenly they count for 0.3 of a cluster.
/// Trusted from 50 pixels of width on, fully at 130.
[[nodiscard]] CueReading glossGlare(const std::optional<GlareSample>& sample);

/// Nothing below a contrast of 6, full at 18.
[[nodiscard]] CueReading moire(const std::optional<MoireSample>& sample);

[[nodiscard]] CueReading deviceDetected(std::optional<double> overlapFraction);

/// Fully flat at half the planar ratio or less, not at all at one and a half times it; not flat
/// either where the residual is above its bar.
[[nodiscard]] CueReading planar(const PlanarityResult& planarity, const PlanarityTuning& tuning);

/// A head's turn by at least 10 degrees, which no flat picture shows and the nose or the planarity
/// confirms.
[[nodiscard]] CueReading headTurn(std::span<const LivenessFrame> frames,
                                  PlanarityResult::Verdict planarity);

/// The readings at the newest of the frames, which is the last.
[[nodiscard]] std::map<LivenessCue, CueReading> readings(std::span<const LivenessFrame> frames,
                                                         const PlanarityResult& planarity,
                                                         const PlanarityTuning& tuning);

}  // namespace livenessscoring

}  // namespace marrowby
