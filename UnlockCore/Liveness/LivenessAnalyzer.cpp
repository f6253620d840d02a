// SPDX-License-Identifier: Apache-2.0
#include "UnlockCore/Liveness/LivenessAnalyzer.h"

#include "UnlockCore/Liveness/LivenessScoring.h"
#include "UnlockCore/Liveness/Planarity.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>

namespace marrowby {

namespace {

RealFaceAverage average(std::span<const LivenessAnalyzer::Scored> scores,
                        std::int64_t averagedFrames) {
    const auto most = static_cast<std::size_t>(std::max<std::int64_t>(averagedFrames, 1));
    const auto newest = scores.last(std::min(most, scores.size()));
    if (newest.empty()) return {};
    float sum = 0;
    for (const auto& scored : newest)
        sum += scored.score.live;
    return {.mean = sum / static_cast<float>(newest.size()),
            .frames = static_cast<std::int64_t>(newest.size()),
            .latest = newest.back().score};
}

}  // namespace

LivenessAnalyzer::LivenessAnalyzer(LivenessMode mode, const LivenessTuning& tuning,
                                   const PlanarityTuning& planarityTuning,
                                   std::set<LivenessCue> enabledCues, TimeInterval windowDuration)
    : mode_(mode),
      tuning_(tuning),
      planarityTuning_(planarityTuning),
      enabledCues_(std::move(enabledCues)),
      windowDuration_(windowDuration),
      evaluator_(mode_, tuning_, enabledCues_),
      lastSnapshot_(evaluator_.snapshot()) {}

const LivenessSnapshot& LivenessAnalyzer::ingest(const LivenessFrame& frame, const UUID& subject) {
    if (subject_ && *subject_ != subject) {
        frames_.clear();
        scores_.clear();
        evaluator_.forgetConfirmation();
    }
    subject_ = subject;

    frames_.push_back(frame);
    if (frame.antiSpoof) scores_.push_back({frame.timestamp, subject, *frame.antiSpoof});
    trim(frame.timestamp);

    lastPlanarity_ = planarity::evaluate(frames_, planarityTuning_);
    lastSnapshot_ =
        evaluator_.observe(livenessscoring::readings(frames_, *lastPlanarity_, planarityTuning_),
                           average(scores_, tuning_.averagedFrames));
    return lastSnapshot_;
}

void LivenessAnalyzer::retune(const LivenessTuning& tuning) {
    tuning_ = tuning;
    evaluator_.retune(tuning);
}

void LivenessAnalyzer::reset() {
    frames_.clear();
    scores_.clear();
    subject_.reset();
    evaluator_ = LivenessEvaluator(mode_, tuning_, enabledCues_);
    lastSnapshot_ = evaluator_.snapshot();
    lastPlanarity_.reset();
}

void LivenessAnalyzer::trim(Date newest) {
    // The wall clock may jump in both directions.
    const auto isOutside = [&](Date timestamp) {
        const TimeInterval age = newest - timestamp;
        return !(age <= windowDuration_ && age >= -windowDuration_);
    };
    std::erase_if(frames_, [&](const LivenessFrame& kept) { return isOutside(kept.timestamp); });
    std::erase_if(scores_, [&](const Scored& kept) { return isOutside(kept.timestamp); });
}

}  // namespace marrowby
