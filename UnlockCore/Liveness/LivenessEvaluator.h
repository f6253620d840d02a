#pragma once

#include "UnlockCore/Liveness/CueReading.h"
#include "UnlockCore/Liveness/LivenessCue.h"
#include "UnlockCore/Liveness/LivenessSnapshot.h"
#include "UnlockCore/Liveness/LivenessTuning.h"

#include <cstdint>
#include <map>
#include <set>

namespace marrowby {

/// Turns the readings of a look's frames into one decision. Any one deny cue that has fired denies
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

    /// Another camera's pace: the counts so far are kept, and what has fired stays.
    void retune(const LivenessTuning& tuning) { tuning_ = tuning; }
    /// What confirmed a face does not confirm the next one. What denied stays.
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
