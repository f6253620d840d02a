// SPDX-License-Identifier: Apache-2.0
#include "UnlockCore/Liveness/LivenessEvaluator.h"

#include <cmath>
#include <limits>
#include <vector>

#include <gtest/gtest.h>

namespace marrowby {
namespace {

using Cue = LivenessCue;
using Readings = std::map<Cue, CueReading>;
using Denied = LivenessDecision::Denied;
using Waiting = LivenessDecision::Waiting;
using Confirmed = LivenessDecision::Confirmed;

constexpr LivenessTuning tuning{.liveThreshold = 0.75F,
                                .liveMinimumFrames = 3,
                                .liveFrameFloor = 0.5F,
                                .spoofThreshold = 0.25F,
                                .spoofMinimumFrames = 2,
                                .averagedFrames = 4,
                                .planarLevel = 0.75F,
                                .planarFrames = 2,
                                .moireLevel = 0.5F,
                                .moireFrames = 2,
                                .glossLevel = 0.5F,
                                .glossFrames = 2,
                                .deviceLevel = 1.0F,
                                .deviceFrames = 2,
                                .headTurnFrames = 2};
const std::set<Cue> everyCue(allLivenessCues.begin(), allLivenessCues.end());

RealFaceAverage average(float mean, std::int64_t frames, float latest) {
    return {.mean = mean, .frames = frames, .latest = AntiSpoofScore{latest, latest, latest}};
}
const RealFaceAverage good = average(1, 4, 1);

LivenessDecision waiting(std::initializer_list<LivenessNeeds> needs) {
    LivenessNeeds all;
    for (const LivenessNeeds need : needs)
        all = all.with(need);
    return Waiting{all};
}

LivenessEvaluator evaluator(LivenessMode mode = LivenessMode::standard,
                            std::set<Cue> cues = everyCue) {
    return {mode, tuning, std::move(cues)};
}

TEST(LivenessEvaluator, decidesByTheModelsAverage) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const LivenessDecision needsModel = waiting({LivenessNeeds::realFace});
    struct Case {
        const char* what;
        RealFaceAverage average;
        LivenessDecision expected;
    };
    const Case cases[] = {
        {"no scores", {}, needsModel},
        {"everything exactly at its bar", average(0.75F, 3, 0.5F), Confirmed{}},
        {"mean below the bar", average(0.7499F, 3, 1), needsModel},
        {"too few frames to confirm", average(1, 2, 1), needsModel},
        {"the newest frame has just dropped", average(0.9F, 4, 0.4999F), needsModel},
        {"mean exactly at the spoof bar", average(0.25F, 2, 0.25F), Denied{Cue::realFace}},
        {"mean just above the spoof bar", average(0.2501F, 4, 0), needsModel},
        {"too few frames to deny", average(0, 1, 0), needsModel},
        {"not a number", average(nan, 4, nan), needsModel},
    };
    for (const Case& c : cases) {
        auto subject = evaluator();
        EXPECT_EQ(subject.observe({}, c.average).decision, c.expected) << c.what;
    }
}

TEST(LivenessEvaluator, countsEveryCueAtItsOwnThreshold) {
    struct Case {
        Cue cue;
        float level;
    };
    for (const Case& c : {Case{Cue::planar, 0.75F}, Case{Cue::moire, 0.5F},
                          Case{Cue::glossGlare, 0.5F}, Case{Cue::deviceDetected, 1.0F}}) {
        SCOPED_TRACE(rawValue(c.cue));
        auto subject = evaluator();
        // Below the bar, untrusted, and absent frames neither count nor reset the count.
        const std::vector<std::pair<Readings, std::int64_t>> frames = {
            {{{c.cue, {std::nextafter(c.level, 0.0F), 1}}}, 0},
            {{{c.cue, {c.level, 0.1F}}}, 1},
            {{{c.cue, {1, 0}}}, 1},
            {{}, 1},
        };
        for (const auto& [readings, counted] : frames) {
            const auto snapshot = subject.observe(readings, good);
            EXPECT_EQ(snapshot.cueStates.at(c.cue).framesCounted, counted);
            EXPECT_EQ(snapshot.decision, LivenessDecision(Confirmed{}));
        }
        EXPECT_EQ(subject.observe({{c.cue, {c.level, 1}}}, good).decision,
                  LivenessDecision(Denied{c.cue}));
        EXPECT_EQ(subject.observe({}, good).decision, LivenessDecision(Denied{c.cue}));
    }
}

TEST(LivenessEvaluator, asksForAHeadTurnOnlyInStrictModeWhereItIsMeasured) {
    const Readings turned{{Cue::headTurn, {0.5F, 1}}};
    auto strict = evaluator(LivenessMode::strict);
    EXPECT_EQ(strict.observe({}, {}).decision,
              waiting({LivenessNeeds::realFace, LivenessNeeds::headTurn}));
    EXPECT_EQ(strict.observe({{Cue::headTurn, {0.4999F, 1}}}, good).decision,
              waiting({LivenessNeeds::headTurn}));
    EXPECT_EQ(strict.observe(turned, good).decision, waiting({LivenessNeeds::headTurn}));
    EXPECT_EQ(strict.observe(turned, {}).decision, waiting({LivenessNeeds::realFace}));
    EXPECT_EQ(strict.observe({}, good).decision, LivenessDecision(Confirmed{}));
    auto unmeasured = evaluator(LivenessMode::strict, {Cue::realFace});
    EXPECT_EQ(unmeasured.observe({}, good).decision, LivenessDecision(Confirmed{}));
}

}  // namespace
}  // namespace marrowby
