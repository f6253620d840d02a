// SPDX-License-Identifier: Apache-2.0
#include "UnlockCore/Liveness/LivenessAnalyzer.h"
#include "UnlockCore/Liveness/LivenessScoring.h"
#include "UnlockCore/Liveness/Planarity.h"

#include <cmath>
#include <numbers>
#include <random>

#include <gtest/gtest.h>

namespace marrowby {
namespace {

using Verdict = PlanarityResult::Verdict;

/// A face of 62 mm between the eyes, half a metre from the camera: a head, or its picture.
struct Model {
    double noseLength = 40;
    /// How far behind the face it turns, millimetres: in the neck, or in the hand that holds it.
    double pivot = 90;
    double noise = 0.3;
    std::mt19937 random = std::mt19937(3);

    /// Turned about the vertical axis and shifted sideways; radians and millimetres.
    LivenessFrame seen(double seconds, double turn, double shift) {
        LivenessFrame frame;
        frame.timestamp = Date(TimeInterval(seconds));
        frame.yaw = turn;
        frame.hasReliableLandmarks = true;
        std::normal_distribution<double> jitter(0, noise);
        const auto add = [&](LandmarkRegion region, std::int64_t index, double x, double y,
                             double depth) {
            const double across = x * std::cos(turn) + (depth + pivot) * std::sin(turn) + shift;
            const double away = 500 + x * std::sin(turn) + pivot - (depth + pivot) * std::cos(turn);
            frame.landmarks.push_back({{320 + 500 * across / away + jitter(random),
                                        240 + 500 * y / away + jitter(random)},
                                       region,
                                       index});
            return frame.landmarks.back().point;
        };
        Point leftEye;
        Point rightEye;
        for (int i = 0; i < 8; ++i) {
            const double angle = i * std::numbers::pi / 4;
            leftEye =
                add(LandmarkRegion::leftEye, i, -31 + 14 * std::cos(angle), 6 * std::sin(angle), 0);
        }
        for (int i = 0; i < 8; ++i) {
            const double angle = i * std::numbers::pi / 4;
            rightEye =
                add(LandmarkRegion::rightEye, i, 31 + 14 * std::cos(angle), 6 * std::sin(angle), 0);
        }
        Point nose;
        for (int i = 0; i < 7; ++i)
            nose = add(LandmarkRegion::nose, i, 3.0 * (i - 3), 38, noseLength);
        for (int i = 0; i < 12; ++i) {
            const double angle = i * std::numbers::pi / 6;
            add(LandmarkRegion::outerLips, i, 25 * std::cos(angle), 70 + 9 * std::sin(angle), 2);
        }
        frame.interocularDistance = distance(leftEye, rightEye);
        frame.noseOffsetRatio = (nose.x - (leftEye.x + rightEye.x) / 2) / frame.interocularDistance;
        return frame;
    }

    std::vector<LivenessFrame> look(double turn, double shift) {
        std::vector<LivenessFrame> frames;
        for (int i = 0; i < 30; ++i) {
            const double part = std::sin(i * 0.2);
            frames.push_back(seen(i / 30.0, turn * part, shift * part));
        }
        return frames;
    }
};

TEST(Planarity, distinguishesAHeadFromAPicture) {
    const PlanarityTuning tuning = planarityTuning(LivenessMode::standard);
    struct Case {
        const char* what;
        double noseLength;
        double turn;
        double shift;
        Verdict verdict;
    };
    const Case cases[] = {
        {"a head that turns", 40, 0.25, 10, Verdict::depth},
        {"a small nose", 25, 0.25, 0, Verdict::depth},
        {"a picture that is moved", 0, 0.02, 60, Verdict::planar},
        {"a picture that is turned", 0, 0.5, 60, Verdict::planar},
        {"a head that keeps still", 40, 0.005, 1, Verdict::noEvidence},
        {"a picture that hardly moves", 0, 0.02, 4, Verdict::noEvidence},
    };
    for (const Case& c : cases) {
        Model model{.noseLength = c.noseLength, .pivot = c.noseLength > 0 ? 90.0 : 0.0};
        const auto frames = model.look(c.turn, c.shift);
        const auto result = planarity::evaluate(frames, tuning);
        EXPECT_EQ(result.verdict, c.verdict)
            << c.what << " " << result.ratio.value_or(-1) << " " << result.residual.value_or(-1);
        const auto planar = livenessscoring::planar(result, tuning);
        EXPECT_EQ(planar.level >= 0.7F, c.verdict == Verdict::planar) << c.what;
        const auto turn = livenessscoring::headTurn(frames, result.verdict);
        EXPECT_EQ(turn.level, c.verdict == Verdict::depth ? 1.0F : 0.0F) << c.what;
    }
}

TEST(Planarity, decidesAStrictScan) {
    const auto decision = [](double noseLength, double turn, double shift) {
        const auto mode = LivenessMode::strict;
        LivenessAnalyzer analyzer(mode, livenessTuning(mode), planarityTuning(mode),
                                  enabledLivenessCues(mode), TimeInterval(3));
        Model model{.noseLength = noseLength, .pivot = noseLength > 0 ? 90.0 : 0.0};
        for (LivenessFrame& frame : model.look(turn, shift)) {
            frame.antiSpoof = AntiSpoofScore{1, 1, 1};
            analyzer.ingest(frame, UUID());
        }
        EXPECT_TRUE(analyzer.lastPlanarity());
        return analyzer.lastSnapshot().decision;
    };
    EXPECT_EQ(decision(40, 0.2, 0), LivenessDecision(LivenessDecision::Confirmed{}));
    EXPECT_EQ(decision(40, 0.005, 1),
              LivenessDecision(LivenessDecision::Waiting{LivenessNeeds::headTurn}));
    EXPECT_EQ(decision(0, 0.02, 60),
              LivenessDecision(LivenessDecision::Denied{LivenessCue::planar}));
}

TEST(Planarity, measuresOnlyComparableFrames) {
    Model model;
    const auto first = model.seen(0, 0, 0);
    const auto second = model.seen(1, 0.2, 5);
    ASSERT_TRUE(planarity::measure(first, second, 0.1));
    EXPECT_FALSE(planarity::measure(first, second, 5)) << "too little motion";
    const auto refuses = [&](const auto& spoil) {
        auto spoiled = second;
        spoil(spoiled);
        return !planarity::measure(first, spoiled, 0.1);
    };
    EXPECT_TRUE(refuses([](auto& frame) { frame.hasReliableLandmarks = false; }));
    EXPECT_TRUE(refuses([](auto& frame) { frame.interocularDistance = std::nan(""); }));
}

TEST(Planarity, judgesByBothThresholds) {
    const PlanarityTuning tuning{.motionGate = 0,
                                 .planarRatio = 0.1,
                                 .planarResidual = 0.02,
                                 .depthRatio = 0.2,
                                 .depthResidual = 0.03,
                                 .minimumPairs = 2,
                                 .minimumSpan = 0,
                                 .sampledFrames = 8};
    struct Case {
        double ratio;
        double residual;
        Verdict verdict;
        float level;
    };
    const Case cases[] = {{0.1, 0.02, Verdict::planar, 0.5F}, {0.05, 0.02, Verdict::planar, 1},
                          {0.1, 0.021, Verdict::unclear, 0},  {0.15, 0.02, Verdict::unclear, 0},
                          {0.2, 0.03, Verdict::depth, 0},     {0.2, 0.029, Verdict::unclear, 0}};
    for (const Case& c : cases) {
        const std::vector pairs(2, planarity::PairMeasurement{c.ratio, c.residual, 1});
        const auto result = planarity::judge(pairs, tuning);
        EXPECT_EQ(result.verdict, c.verdict) << c.ratio << " " << c.residual;
        const auto reading = livenessscoring::planar(result, tuning);
        EXPECT_NEAR(reading.level, c.level, 1e-6F);
        EXPECT_EQ(reading.confidence, 1);
        const auto tooFew = planarity::judge(std::span(pairs).first(1), tuning);
        EXPECT_EQ(tooFew.verdict, Verdict::noEvidence);
        EXPECT_EQ(livenessscoring::planar(tooFew, tuning), CueReading{});
    }
}

TEST(LivenessScoring, asksForATurnThatTheNoseFollows) {
    Model model;
    const auto turn = [&](double radians, double noseLength, double mirror) {
        model.noseLength = noseLength;
        auto frames = model.look(radians, 0);
        for (LivenessFrame& frame : frames)
            frame.noseOffsetRatio = *frame.noseOffsetRatio * mirror;
        return frames;
    };
    const auto level = [](const std::vector<LivenessFrame>& frames, Verdict verdict) {
        return livenessscoring::headTurn(frames, verdict);
    };
    EXPECT_EQ(level(turn(0.2, 40, 1), Verdict::noEvidence), (CueReading{1, 1}));
    EXPECT_EQ(level(turn(0.2, 40, 1), Verdict::planar), (CueReading{0, 1}));
    EXPECT_EQ(level(turn(0.08, 40, 1), Verdict::depth), (CueReading{0, 1})) << "9 degrees";
    EXPECT_EQ(level(turn(0.2, 0, 1), Verdict::unclear), (CueReading{0, 1})) << "a flat nose";
    EXPECT_EQ(level(turn(0.2, 40, -1), Verdict::unclear), (CueReading{0, 1})) << "the wrong way";
    const auto frames = turn(0.2, 40, 1);
    EXPECT_EQ(livenessscoring::headTurn(std::span(frames).first(2), Verdict::depth), CueReading{});
}

}  // namespace
}  // namespace marrowby
