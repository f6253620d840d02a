// SPDX-License-Identifier: Apache-2.0
#include "UnlockCore/Liveness/LivenessEvaluator.h"

#include "UnlockCore/Foundation/Fatal.h"

#include <utility>

namespace marrowby {

LivenessEvaluator::LivenessEvaluator(LivenessMode mode, const LivenessTuning& tuning,
                                     std::set<LivenessCue> enabledCues)
    : mode_(mode), tuning_(tuning), enabledCues_(std::move(enabledCues)) {}

LivenessSnapshot LivenessEvaluator::observe(const std::map<LivenessCue, CueReading>& readings,
                                            const RealFaceAverage& realFace) {
    framesObserved_ = incremented(framesObserved_);
    realFace_ = realFace;
    for (const LivenessCue cue : allLivenessCues)
        update(cue, readings);
    return snapshot();
}

void LivenessEvaluator::update(LivenessCue cue, const std::map<LivenessCue, CueReading>& readings) {
    LivenessCueState& state = states_[cue];
    const auto [level, frames] = cueBar(cue, tuning_);

    if (role(cue) == LivenessCueRole::model) {
        const bool measured = realFace_.mean.has_value();
        state.reading = measured ? CueReading{*realFace_.mean, 1} : CueReading{};
        state.framesCounted = realFace_.frames;
        if (measured && realFace_.frames >= frames && *realFace_.mean <= level) {
            state.hasFired = true;
        }
        return;
    }
    const auto reading = readings.find(cue);
    state.reading = reading == readings.end() ? CueReading{} : reading->second;
    if (state.reading.confidence > 0 && state.reading.level >= level) {
        state.framesCounted = incremented(state.framesCounted);
        if (state.framesCounted >= frames) state.hasFired = true;
    }
}

void LivenessEvaluator::forgetConfirmation() {
    std::erase_if(states_,
                  [](const auto& state) { return role(state.first) == LivenessCueRole::confirm; });
}

LivenessDecision LivenessEvaluator::decision() const {
    for (const LivenessCue cue : allLivenessCues) {
        switch (role(cue)) {
            case LivenessCueRole::model:
                if (hasFired(cue)) return LivenessDecision::Denied{cue};
                break;
            case LivenessCueRole::deny:
                if (hasFired(cue) && enabledCues_.contains(cue)) {
                    return LivenessDecision::Denied{cue};
                }
                break;
            case LivenessCueRole::confirm:
                break;
        }
    }

    LivenessNeeds needs;
    if (!modelAgrees()) needs = needs.with(LivenessNeeds::realFace);
    if (mode_ == LivenessMode::strict && enabledCues_.contains(LivenessCue::headTurn) &&
        !hasFired(LivenessCue::headTurn)) {
        needs = needs.with(LivenessNeeds::headTurn);
    }
    if (needs.isEmpty()) return LivenessDecision::Confirmed{};
    return LivenessDecision::Waiting{needs};
}

LivenessSnapshot LivenessEvaluator::snapshot() const {
    return {.decision = decision(),
            .mode = mode_,
            .cueStates = states_,
            .realFace = realFace_,
            .frameCount = framesObserved_};
}

bool LivenessEvaluator::hasFired(LivenessCue cue) const {
    const auto state = states_.find(cue);
    return state != states_.end() && state->second.hasFired;
}

bool LivenessEvaluator::modelAgrees() const {
    return realFace_.mean && realFace_.latest && realFace_.frames >= tuning_.liveMinimumFrames &&
           *realFace_.mean >= tuning_.liveThreshold &&
           realFace_.latest->live >= tuning_.liveFrameFloor;
}

}  // namespace marrowby
