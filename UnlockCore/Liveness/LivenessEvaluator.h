// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Liveness/AntiSpoofScoring.h"
#include "UnlockCore/Liveness/LivenessCue.h"
#include "UnlockCore/Liveness/LivenessDecision.h"
#include "UnlockCore/Liveness/LivenessMode.h"
#include "UnlockCore/Liveness/LivenessTuning.h"

#include <cstdint>
#include <map>
#include <optional>
#include <set>

namespace marrowby {

/// The mean `live` probability of a scan's newest scores, how many they are, and the newest one.
/// Without scores there is neither mean nor newest.
struct RealFaceAverage {
    std::optional<float> mean;
    std::int64_t frames = 0;
    std::optional<AntiSpoofScore> latest;

    friend bool operator==(const RealFaceAverage&, const RealFaceAverage&) = default;
};

/// A scan's liveness after one frame. Any thread.
struct LivenessSnapshot {
    LivenessDecision decision;
    LivenessMode mode = LivenessMode::standard;
    std::map<LivenessCue, LivenessCueState> cueStates;
    RealFaceAverage realFace;
    std::int64_t frameCount = 0;

    friend bool operator==(const LivenessSnapshot&, const LivenessSnapshot&) = default;
};

/// Turns the readings of a scan's frames into one decision. Any one deny cue that has fired denies
/// for good; confirming takes the model's sustained agreement and, in strict mode, a head turn. A
/// value; no clock.
class LivenessEvaluator {
  public:
    /// The model always counts; the other cues only where enabled.
    LivenessEvaluator(LivenessMode mode, const LivenessTuning& tuning,
                      std::set<LivenessCue> enabledCues);

    /// One frame, in frame order. A cue that was not measured has no reading.
    LivenessSnapshot observe(const std::map<LivenessCue, CueReading>& readings,
                             const RealFaceAverage& realFace);

    /// For another frame rate. Counts and fired cues are kept.
    void retune(const LivenessTuning& tuning) { tuning_ = tuning; }
    /// Drops what confirmed the face so far; denials stay.
    void forgetConfirmation();

    [[nodiscard]] LivenessDecision decision() const;
    [[nodiscard]] LivenessSnapshot snapshot() const;

  private:
    void update(LivenessCue cue, const std::map<LivenessCue, CueReading>& readings);
    [[nodiscard]] bool hasFired(LivenessCue cue) const;
    [[nodiscard]] bool modelAgrees() const;

    LivenessMode mode_;
    LivenessTuning tuning_;
    std::set<LivenessCue> enabledCues_;
    std::map<LivenessCue, LivenessCueState> states_;
    std::int64_t framesObserved_ = 0;
    RealFaceAverage realFace_;
};

}  // namespace marrowby
