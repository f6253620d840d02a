#include "UnlockCore/Liveness/LivenessTuning.h"

#include <algorithm>
#include <cmath>

namespace marrowby {

namespace {

// Measured in scenes at 1280 x 720, as a scan's mean: people 0.9…1.00, or 0.57 to 0.8 while they
// shake the head or sit down; held-up pictures anything; cut-outs and monitors like people. So the
// model rejects what is clearly no face, and the other cues need time: with half a second of
// agreement twice as many moved cut-outs passed as with 0.65. Glare: highlights over 7 % of the
// face reach 0.25, and spread over more than one cell at most 0.3. Moire: people stayed below a
// contrast of 8.3 (a level of 0.19) but for single frames of 11; monitors reached 10 to 1700 as
// long as one of their pixels covers over 0.55 of the camera’s. A turned phone's frame covered the
// head by 0.92 and more. Counts are for 30 frames per second.
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
                                        .deviceLevel = 0.95F,
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

/// Lower bounds of a slow camera's counts. Scores: fewer let a picture pass that is now and then
/// taken for a face. Denying frames: half of those for a device, a quarter for a pattern or flat
/// motion; more than one, because people gave single ones.
struct Fewest {
    std::int64_t live;
    std::int64_t device = 4;
    std::int64_t planar = 2;
    std::int64_t moire = 2;
    std::int64_t gloss = 3;
};
constexpr Fewest standardFewest{.live = 8};
constexpr Fewest strictFewest{.live = 10};

/// A count stands for a time and is scaled with the frame rate.
LivenessTuning paced(LivenessTuning tuning, const Fewest& fewest, double framesPerSecond) {
    const auto scale = [&](std::int64_t& count, std::int64_t least) {
        const double pictures = static_cast<double>(count) * framesPerSecond / FramePace::presumed;
        count = std::max(least, static_cast<std::int64_t>(std::lround(pictures)));
    };
    scale(tuning.liveMinimumFrames, fewest.live);
    scale(tuning.averagedFrames, fewest.live);
    scale(tuning.deviceFrames, fewest.device);
    scale(tuning.planarFrames, fewest.planar);
    scale(tuning.moireFrames, fewest.moire);
    scale(tuning.glossFrames, fewest.gloss);
    // Not scaled: spoof scores and head-turn frames, which count evidence, not time.
    return tuning;
}

}  // namespace

LivenessTuning livenessTuning(LivenessMode mode, double framesPerSecond) {
    switch (mode) {
        case LivenessMode::standard:
            return paced(standardTuning, standardFewest, framesPerSecond);
        case LivenessMode::strict:
            break;
    }
    return paced(strictTuning, strictFewest, framesPerSecond);
}

// No glare: a lamp beside a face gave highlights as large as a phone's glass.
std::set<LivenessCue> enabledLivenessCues(LivenessMode mode) {
    std::set<LivenessCue> cues{LivenessCue::realFace, LivenessCue::planar, LivenessCue::moire,
                               LivenessCue::deviceDetected};
    if (mode == LivenessMode::strict) cues.insert(LivenessCue::headTurn);
    return cues;
}

}  // namespace marrowby
