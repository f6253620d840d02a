// SPDX-License-Identifier: Apache-2.0
#include "UnlockCore/Liveness/LivenessTuning.h"

#include "UnlockCore/Foundation/Fatal.h"

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
// head by 0.92 and more; a rectangle is not found in every picture, so a fifth of a second has to
// do. Flat motion, with the published models: of 707 looks at people 4 were denied by a tenth of a
// second of it, none by a sixth; of 150 prints 6, 7 and 9 passed where a tenth, a sixth and a
// quarter was asked. Counts are for 30 frames per second.
constexpr LivenessTuning standardTuning{.liveThreshold = 0.62F,
                                        .liveMinimumFrames = 20,
                                        .liveFrameFloor = 0.40F,
                                        .spoofThreshold = 0.25F,
                                        .spoofMinimumFrames = 8,
                                        .averagedFrames = 20,
                                        .planarLevel = 0.85F,
                                        .planarFrames = 5,
                                        .moireLevel = 0.4F,
                                        .moireFrames = 3,
                                        .glossLevel = 0.25F,
                                        .glossFrames = 5,
                                        .deviceLevel = 0.95F,
                                        .deviceFrames = 6,
                                        .headTurnFrames = 3};

constexpr float headTurnLevel = 0.5F;

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
/// taken for a face. Denying frames: more than one, because people gave single ones.
struct MinimumCounts {
    std::int64_t live;
    std::int64_t device = 4;
    std::int64_t planar = 2;
    std::int64_t moire = 2;
    std::int64_t gloss = 3;
};
constexpr MinimumCounts standardMinimums{.live = 8};
constexpr MinimumCounts strictMinimums{.live = 10};

/// A count stands for a time and is scaled with the frame rate.
LivenessTuning scaled(LivenessTuning tuning, const MinimumCounts& minimums,
                      double framesPerSecond) {
    const auto scale = [&](std::int64_t& count, std::int64_t least) {
        const double pictures =
            static_cast<double>(count) * framesPerSecond / FrameRateEstimate::assumed;
        count = std::max(least, static_cast<std::int64_t>(std::lround(pictures)));
    };
    scale(tuning.liveMinimumFrames, minimums.live);
    scale(tuning.averagedFrames, minimums.live);
    scale(tuning.deviceFrames, minimums.device);
    scale(tuning.planarFrames, minimums.planar);
    scale(tuning.moireFrames, minimums.moire);
    scale(tuning.glossFrames, minimums.gloss);
    // Not scaled: spoof scores and head-turn frames, which count evidence, not time.
    return tuning;
}

}  // namespace

CueBar cueBar(LivenessCue cue, const LivenessTuning& tuning) {
    switch (cue) {
        case LivenessCue::realFace:
            return {tuning.spoofThreshold, tuning.spoofMinimumFrames};
        case LivenessCue::planar:
            return {tuning.planarLevel, tuning.planarFrames};
        case LivenessCue::moire:
            return {tuning.moireLevel, tuning.moireFrames};
        case LivenessCue::glossGlare:
            return {tuning.glossLevel, tuning.glossFrames};
        case LivenessCue::deviceDetected:
            return {tuning.deviceLevel, tuning.deviceFrames};
        case LivenessCue::headTurn:
            return {headTurnLevel, tuning.headTurnFrames};
    }
    fatal("an unknown liveness cue");
}

LivenessTuning livenessTuning(LivenessMode mode, double framesPerSecond) {
    switch (mode) {
        case LivenessMode::standard:
            return scaled(standardTuning, standardMinimums, framesPerSecond);
        case LivenessMode::strict:
            break;
    }
    return scaled(strictTuning, strictMinimums, framesPerSecond);
}

// No glare: a lamp beside a face gave highlights as large as a phone's glass.
std::set<LivenessCue> enabledLivenessCues(LivenessMode mode) {
    std::set<LivenessCue> cues{LivenessCue::realFace, LivenessCue::planar, LivenessCue::moire,
                               LivenessCue::deviceDetected};
    if (mode == LivenessMode::strict) cues.insert(LivenessCue::headTurn);
    return cues;
}

}  // namespace marrowby
