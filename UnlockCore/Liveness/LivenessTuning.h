// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Liveness/FrameRateEstimate.h"
#include "UnlockCore/Liveness/LivenessCue.h"
#include "UnlockCore/Liveness/LivenessMode.h"

#include <cstdint>
#include <set>

namespace marrowby {

/// Thresholds of one scan's liveness decision, inclusive; a cue fires at its count of frames.
struct LivenessTuning {
    /// The real-face mean must be at least this, over at least so many frames, to confirm…
    float liveThreshold = 0;
    std::int64_t liveMinimumFrames = 0;
    /// …and the newest frame's own probability at least this.
    float liveFrameFloor = 0;
    /// A real-face mean at or below this, over at least so many frames, denies.
    float spoofThreshold = 0;
    std::int64_t spoofMinimumFrames = 0;
    /// How many of the newest scores the mean is taken over.
    std::int64_t averagedFrames = 0;
    float planarLevel = 0;
    std::int64_t planarFrames = 0;
    float moireLevel = 0;
    std::int64_t moireFrames = 0;
    float glossLevel = 0;
    std::int64_t glossFrames = 0;
    float deviceLevel = 0;
    std::int64_t deviceFrames = 0;
    std::int64_t headTurnFrames = 0;

    friend bool operator==(const LivenessTuning&, const LivenessTuning&) = default;
};

/// A cue fires at so many frames of at least this level; the model at a mean at or below it.
struct CueBar {
    float level = 0;
    std::int64_t frames = 0;
};
[[nodiscard]] CueBar cueBar(LivenessCue cue, const LivenessTuning& tuning);

/// The lock screen's tuning in a mode, at this frame rate.
[[nodiscard]] LivenessTuning livenessTuning(LivenessMode mode,
                                            double framesPerSecond = FrameRateEstimate::assumed);
/// The lock screen's cues in a mode.
[[nodiscard]] std::set<LivenessCue> enabledLivenessCues(LivenessMode mode);

}  // namespace marrowby
