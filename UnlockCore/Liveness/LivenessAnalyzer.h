// SPDX-License-Identifier: Apache-2.0
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

/// Gathers one scan's frames and real-face scores and keeps the decision about them. Owned by the
/// scan; camera queue only.
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

    /// One frame with a face, in frame order; `subject` names the tracked face. A new subject drops
    /// the evidence for liveness (scores, motion, head turn) and keeps the evidence against it.
    const LivenessSnapshot& ingest(const LivenessFrame& frame, const UUID& subject);

    /// From the next frame on.
    void retune(const LivenessTuning& tuning);
    /// Starts another scan.
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
