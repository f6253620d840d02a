// SPDX-License-Identifier: Apache-2.0
#include "Simulation/Measuring/Trial.h"

#include "UnlockCore/Liveness/LivenessTuning.h"
#include "UnlockCore/Recognition/FaceMatcher.h"

#include <algorithm>
#include <span>
#include <utility>
#include <variant>

namespace marrowby {

std::vector<Trial> trials(LivenessMode mode, const std::optional<std::set<LivenessCue>>& cues) {
    const Trial whole{.name = std::string(rawValue(mode)),
                      .mode = mode,
                      .cues = cues.value_or(enabledLivenessCues(mode))};
    std::vector<Trial> all{whole};
    for (const LivenessCue cue : whole.cues) {
        if (role(cue) == LivenessCueRole::confirm) continue;
        Trial& without = all.emplace_back(whole);
        without.name += " without " + std::string(rawValue(cue));
        without.isWhole = false;
        without.cues.erase(cue);
        without.ignoresModel = role(cue) == LivenessCueRole::model;
    }
    return all;
}

TrialRun::TrialRun(const Trial& trial, Take::Label label, const EnrolledPeople& people)
    : ignoresModel_(trial.ignoresModel), people_(people), scan_(trial.mode, trial.cues) {
    result_.label = std::move(label);
}

void TrialRun::take(const FrameEvidence& frame) {
    if (hasEnded()) return;
    FaceScan::Findings findings = frame.findings;
    if (ignoresModel_ && findings.liveness.antiSpoof) {
        findings.liveness.antiSpoof = AntiSpoofScore{.live = 1, .live27 = 1, .live40 = 1};
    }
    const FaceScan::Step& step = scan_.judge(std::move(findings), Date(frame.at));
    ++result_.frames;
    result_.decision = step.liveness.decision;
    if (!step.recognition) return;
    ++result_.framesWithFace;
    if (!firstFace_) firstFace_ = frame.at;

    const bool isMatch = matches(step.recognition->embedding);
    if (const auto latest = step.liveness.realFace.latest) {
        liveSum_ += static_cast<double>(latest->live);
        ++scored_;
    }
    for (const auto& [cue, state] : step.liveness.cueStates) {
        if (state.reading.confidence > 0) {
            float& level = result_.levels[cue];
            level = std::max(level, state.reading.level);
        }
    }
    if (isMatch && !step.fault &&
        std::holds_alternative<LivenessDecision::Confirmed>(result_.decision)) {
        result_.isOpened = true;
        result_.timeToOpen = frame.at - *firstFace_;
    }
}

bool TrialRun::matches(const Embedding& embedding) {
    bool isOwn = !people_.identities.contains(result_.label.person);
    for (const auto& [person, identity] : people_.identities) {
        const auto scores =
            facematcher::score(embedding, std::span(&identity, 1), people_.modelIdentifier);
        if (scores.empty()) continue;
        TakeResult::Likeness& likeness = result_.likeness[person];
        likeness.similarity = std::max(likeness.similarity, scores.front().templateSimilarity);
        const bool isMatch = facematcher::isMatch(scores.front(), people_.threshold);
        likeness.matches = likeness.matches || isMatch;
        if (person == result_.label.person) isOwn = isMatch;
    }
    return isOwn;
}

bool TrialRun::hasEnded() const {
    return result_.isOpened || std::holds_alternative<LivenessDecision::Denied>(result_.decision);
}

TakeResult TrialRun::result() const {
    TakeResult result = result_;
    if (scored_ > 0) result.live = liveSum_ / static_cast<double>(scored_);
    return result;
}

TakeResult judged(const TakeEvidence& evidence, const Trial& trial, const EnrolledPeople& people) {
    TrialRun run(trial, evidence.label, people);
    for (const FrameEvidence& frame : evidence.frames)
        run.take(frame);
    return run.result();
}

}  // namespace marrowby
