#pragma once

#include "UnlockCore/Foundation/Time.h"
#include "UnlockCore/Foundation/UUID.h"
#include "UnlockCore/Liveness/AntiSpoofScoring.h"
#include "UnlockCore/Liveness/LivenessCue.h"
#include "UnlockCore/Liveness/LivenessEvaluator.h"
#include "UnlockCore/Liveness/LivenessFrame.h"
#include "UnlockCore/Liveness/LivenessTuning.h"
#include "UnlockCore/Liveness/Planarity.h"

#include <optional>
#include <set>
#include <span>
#include <vector>

namespace marrowby {

/// Gathers one look's frames and real-face scores and keeps the decision about them. It belongs to
/// the look and is used on the camera's queue only.
class LivenessAnalyzer {
  public:
    /// A score and the tracked face it belongs to.
    struct Scored {
        Date timestamp;
        UUID subject;
        AntiSpoofScore score;
    };

    /// Frames and scores further than `windowDuration` from the newest frame are forgotten.
    LivenessAnalyzer(LivenessMode mode, const LivenessTuning& tuning,
                     const PlanarityTuning& planarityTuning, std::set<LivenessCue> enabledCues,
                     TimeInterval windowDuration);

    /// One frame in which a face was found, in frame order; `subject` names the tracked face. What
    /// spoke for the subject before (its scores, how it moved, that it turned) goes with it; all
    /// that spoke against it is counted on.
    const LivenessSnapshot& ingest(const LivenessFrame& frame, const UUID& subject);

    /// From the next frame on, the look being the same.
    void retune(const LivenessTuning& tuning);
    /// Another look.
    void reset();

    /// Oldest first.
    [[nodiscard]] std::span<const LivenessFrame> frames() const { return frames_; }
    [[nodiscard]] const LivenessSnapshot& lastSnapshot() const { return lastSnapshot_; }
    /// How the face moved, judged at the newest frame; nothing before the first.
    [[nodiscard]] const std::optional<PlanarityResult>& lastPlanarity() const {
        return lastPlanarity_;
    }

  private:
    void trim(Date newest);

    LivenessMode mode_;
    LivenessTuning tuning_;
    PlanarityTuning planarityTuning_;
    std::set<LivenessCue> enabledCues_;
    TimeInterval windowDuration_;
    std::optional<UUID> subject_;
    std::vector<LivenessFrame> frames_;
    std::vector<Scored> scores_;
    LivenessEvaluator evaluator_;
    LivenessSnapshot lastSnapshot_;
    std::optional<PlanarityResult> lastPlanarity_;
};

}  // namespace marrowby
