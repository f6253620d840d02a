#include "UnlockCore/Liveness/LivenessTuning.h"

namespace marrowby {

namespace {

// Seen per frame: people 0.75…1.00 (down to 0.52 with the head turned far), a phone's picture of
// one at most 0.02. The model's bars stand well inside that gap, over a sixth of a second at 30
// frames a second. The bars of the image and motion cues rest on no measurement yet.
constexpr LivenessTuning standardTuning{.liveThreshold = 0.70F,
                                        .liveMinimumFrames = 5,
                                        .liveFrameFloor = 0.50F,
                                        .spoofThreshold = 0.20F,
                                        .spoofMinimumFrames = 5,
                                        .averagedFrames = 6,
                                        .planarLevel = 0.7F,
                                        .planarFrames = 6,
                                        .moireLevel = 0.5F,
                                        .moireFrames = 5,
                                        .glossLevel = 0.6F,
                                        .glossFrames = 5,
                                        .deviceLevel = 0.9F,
                                        .deviceFrames = 4,
                                        .headTurnFrames = 3};

// More agreement over a longer time, and a doubtful face denied sooner.
constexpr LivenessTuning strictTuning = [] {
    LivenessTuning tuning = standardTuning;
    tuning.liveThreshold = 0.80F;
    tuning.liveMinimumFrames = 8;
    tuning.liveFrameFloor = 0.60F;
    tuning.spoofThreshold = 0.30F;
    tuning.averagedFrames = 8;
    return tuning;
}();

}  // namespace

LivenessTuning livenessTuning(LivenessMode mode) {
    switch (mode) {
        case LivenessMode::standard:
            return standardTuning;
        case LivenessMode::strict:
            return strictTuning;
    }
    return strictTuning;
}

std::set<LivenessCue> enabledLivenessCues(LivenessMode /*mode*/) {
    return {LivenessCue::realFace};
}

}  // namespace marrowby
