#include "UnlockCore/Liveness/LivenessTuning.h"

namespace marrowby {

namespace {

// Seen in scenes at 1280 x 720: a look’s mean of people 0.9…1.00, 0.57 to 0.8 of those who shake
// the head or sit down; of pictures that are held up anything, of cut-outs and monitors as of
// people. So the network turns away what is clearly no face, and the other cues need time: 20
// frames are the most that confirm within 0.7 s, and with 15 twice as many moved cut-outs came
// through. Glare: highlights over 7 % of the face reach 0.25, and spread over more than one cell
// they cannot go beyond 0.3. Moire: people stayed below a contrast of 8.3 (a level of 0.19) but for
// single frames of 11; monitors reached 10 to 1700 as long as a pixel of theirs covers over 0.55 of
// the camera’s, and nothing beyond. A device’s frame was seen in most of its pictures, and in 4 of
// somebody’s who came in before a shelf.
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
