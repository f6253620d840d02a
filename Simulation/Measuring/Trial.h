// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Simulation/Measuring/Evidence.h"
#include "UnlockCore/Foundation/Time.h"
#include "UnlockCore/Liveness/LivenessCue.h"
#include "UnlockCore/Liveness/LivenessDecision.h"
#include "UnlockCore/Liveness/LivenessMode.h"
#include "UnlockCore/Recognition/FaceIdentity.h"

#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace marrowby {

/// A way to judge takes.
struct Trial {
    std::string name;
    LivenessMode mode = LivenessMode::standard;
    std::set<LivenessCue> cues;
    /// Takes every face for live, whatever the model says.
    bool ignoresModel = false;
    /// The lock screen's own way, no cue left out.
    bool isWhole = true;
};

/// The lock screen's own way in a mode, and the same with each of the cues that deny left out in
/// turn. `cues` instead of the mode's own.
[[nodiscard]] std::vector<Trial> trials(LivenessMode mode,
                                        const std::optional<std::set<LivenessCue>>& cues);

/// The faces enrolled with one model pack.
struct EnrolledPeople {
    std::map<std::string, FaceIdentity> identities;
    std::string modelIdentifier;
    /// Of similarity.
    float threshold = 0.5F;
};

/// What the lock screen would have decided about one take.
struct TakeResult {
    Take::Label label;
    /// Until the take ended: with its last picture, a denial, or opened.
    std::size_t frames = 0;
    std::size_t framesWithFace = 0;
    LivenessDecision decision;
    /// Some frame's face was confirmed to be live, and matched the person, if enrolled.
    bool isOpened = false;
    /// From the first frame with a face to the one that opened.
    std::optional<TimeInterval> timeToOpen;
    /// The real-face model's mean over the take's frames.
    std::optional<double> live;
    /// The highest level of each cue with any confidence.
    std::map<LivenessCue, float> levels;
    struct Likeness {
        /// Of the take's most similar frame.
        float similarity = -1;
        /// Some frame matched.
        bool matches = false;
    };
    /// By enrolled person.
    std::map<std::string, Likeness> likeness;
};

/// Judges one take in one way, frame by frame.
class TrialRun {
  public:
    /// `people` outlive this.
    TrialRun(const Trial& trial, Take::Label label, const EnrolledPeople& people);

    /// Nothing more once the take has ended.
    void take(const FrameEvidence& frame);
    /// Opened or denied.
    [[nodiscard]] bool hasEnded() const;
    [[nodiscard]] TakeResult result() const;

  private:
    [[nodiscard]] bool matches(const Embedding& embedding);

    const bool ignoresModel_;
    const EnrolledPeople& people_;
    FaceScan scan_;
    TakeResult result_;
    std::optional<TimeInterval> firstFace_;
    double liveSum_ = 0;
    std::int64_t scored_ = 0;
};

[[nodiscard]] TakeResult judged(const TakeEvidence& evidence, const Trial& trial,
                                const EnrolledPeople& people);

}  // namespace marrowby
