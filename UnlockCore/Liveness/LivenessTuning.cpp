#include "UnlockCore/Liveness/LivenessTuning.h"

namespace marrowby {

namespace {

// Seen: a look’s mean of people 0.73…1.00 (0.57 for a head shaken in weak light), a phone’s or
// tablet’s picture of one at most 0.2, paper 0.1 to 0.62, but cut-out masks, posters and monitors
// like people. Half a second at 30 frames a second leaves a moved picture the time to show that it
// is flat. Glare: highlights over 7 % of the face reach 0.25, and spread over more than one cell
// they cannot go beyond 0.3. Moire: people stayed below a contrast of 8.3 (a level of 0.19),
// monitors reached 4 to 80 at 640 x 480 and 50 to 1700 at 1280 x 720.
constexpr LivenessTuning standardTuning{.liveThreshold = 0.62F,
                                        .liveMinimumFrames = 20,
                                        .liveFrameFloor = 0.40F,
                                        .spoofThreshold = 0.25F,
                                        .spoofMinimumFrames = 8,
                                        .averagedFrames = 20,
                                        .planarLevel = 0.85F,
                                        .planarFrames = 3,
                                        .moireLevel = 0.4F,
                                        .moireFrames = 3,
                                        .glossLevel = 0.25F,
                                        .glossFrames = 5,
                                        .deviceLevel = 0.9F,
                                        .deviceFrames = 8,
                                        .headTurnFrames = 3};

// More agreement over a longer time, and a doubtful face denied sooner.
constexpr LivenessTuning strictTuning = [] {
    LivenessTuning tuning = standardTuning;
    tuning.liveThreshold = 0.80F;
    tuning.liveMinimumFrames = 24;
    tuning.averagedFrames = 24;
    tuning.liveFrameFloor = 0.60F;
    tuning.spoofThreshold = 0.30F;
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

// Glare stays out: a lamp beside somebody's face gave highlights as large as a phone's glass did.
std::set<LivenessCue> enabledLivenessCues(LivenessMode mode) {
    std::set<LivenessCue> cues{LivenessCue::realFace, LivenessCue::planar, LivenessCue::moire,
                               LivenessCue::deviceDetected};
    if (mode == LivenessMode::strict) cues.insert(LivenessCue::headTurn);
    return cues;
}

}  // namespace marrowby
