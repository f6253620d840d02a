// SPDX-License-Identifier: Apache-2.0
#include "UnlockCore/Liveness/LivenessAnalyzer.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include <gtest/gtest.h>

namespace marrowby {
namespace {

using Confirmed = LivenessDecision::Confirmed;
using Denied = LivenessDecision::Denied;

const LivenessTuning tuning = [] {
    LivenessTuning values = livenessTuning(LivenessMode::standard);
    values.averagedFrames = 4;
    values.liveMinimumFrames = 3;
    values.spoofMinimumFrames = 3;
    return values;
}();

UUID face(std::uint8_t number) {
    UUID id;
    id.bytes.back() = number;
    return id;
}

LivenessAnalyzer makeAnalyzer() {
    return {LivenessMode::standard,
            tuning,
            planarityTuning(LivenessMode::standard),
            {LivenessCue::glossGlare},
            TimeInterval(1)};
}

LivenessFrame frame(double seconds, std::optional<float> live) {
    LivenessFrame result;
    result.timestamp = Date(TimeInterval(seconds));
    if (live) result.antiSpoof = AntiSpoofScore{*live, *live, *live};
    return result;
}

TEST(LivenessAnalyzer, averagesTheNewestScores) {
    auto analyzer = makeAnalyzer();
    EXPECT_FALSE(analyzer.ingest(frame(0, {}), face(1)).realFace.mean);
    double seconds = 0;
    for (const float live : {0.0F, 0.5F, 1.0F}) {
        analyzer.ingest(frame(seconds += 0.1, live), face(1));
    }
    EXPECT_EQ(analyzer.lastSnapshot().realFace,
              (RealFaceAverage{.mean = 0.5F, .frames = 3, .latest = AntiSpoofScore{1, 1, 1}}));
    // A frame without a score leaves the average as it was; a fifth score pushes the first out.
    EXPECT_EQ(analyzer.ingest(frame(0.4, {}), face(1)).realFace.frames, 3);
    analyzer.ingest(frame(0.5, 1.0F), face(1));
    const auto& last = analyzer.ingest(frame(0.6, 1.0F), face(1));
    EXPECT_EQ(last.realFace.mean, 0.875F);
    EXPECT_EQ(last.decision, LivenessDecision(Confirmed{}));
    EXPECT_EQ(analyzer.ingest(frame(0.7, 0.9F), face(2)).realFace.mean, 0.9F) << "another face";
    EXPECT_EQ(analyzer.frames().size(), 1U);
}

TEST(LivenessAnalyzer, forgetsWhatIsOutsideItsWindow) {
    struct Case {
        const char* what;
        double newest;
        std::size_t kept;
    };
    const Case cases[] = {
        {"at the window's end", 101.0, 4},
        {"the first one just outside", 101.05, 3},
        {"all but the newest outside", 105, 1},
        {"the clock went back a little", 99.5, 4},
        {"the clock went back by an hour", -3500, 1},
    };
    for (const Case& c : cases) {
        auto analyzer = makeAnalyzer();
        for (const double at : {100.0, 100.1, 100.2})
            analyzer.ingest(frame(at, 1.0F), face(1));
        const auto& snapshot = analyzer.ingest(frame(c.newest, 1.0F), face(1));
        EXPECT_EQ(snapshot.realFace.frames, static_cast<std::int64_t>(c.kept)) << c.what;
        EXPECT_EQ(analyzer.frames().size(), c.kept) << c.what;
    }
}

TEST(LivenessAnalyzer, keepsADenialForLaterFacesUntilReset) {
    auto analyzer = makeAnalyzer();
    for (int i = 0; i < 3; ++i)
        analyzer.ingest(frame(0.1 * i, 0.0F), face(1));
    ASSERT_EQ(analyzer.lastSnapshot().decision, LivenessDecision(Denied{LivenessCue::realFace}));
    for (int i = 3; i < 6; ++i)
        analyzer.ingest(frame(0.1 * i, 1.0F), face(2));
    EXPECT_EQ(analyzer.lastSnapshot().realFace.mean, 1.0F) << "the other face's scores are gone";
    EXPECT_EQ(analyzer.lastSnapshot().decision, LivenessDecision(Denied{LivenessCue::realFace}));

    analyzer.reset();
    EXPECT_EQ(analyzer.lastSnapshot(), makeAnalyzer().lastSnapshot());
    for (int i = 8; i < 11; ++i)
        analyzer.ingest(frame(0.1 * i, 1.0F), face(2));
    EXPECT_EQ(analyzer.lastSnapshot().decision, LivenessDecision(Confirmed{}));
}

TEST(LivenessAnalyzer, keepsCountingForTheNextFace) {
    auto analyzer = makeAnalyzer();
    LivenessFrame screen = frame(0, 1.0F);
    screen.glare = GlareSample{200, 0.2F, 1};
    for (std::int64_t i = 1; i < tuning.glossFrames; ++i)
        analyzer.ingest(screen, face(static_cast<std::uint8_t>(i % 2)));
    EXPECT_EQ(analyzer.lastSnapshot().realFace.frames, 1);
    EXPECT_EQ(analyzer.lastSnapshot().frameCount, tuning.glossFrames - 1);
    EXPECT_EQ(analyzer.ingest(screen, face(9)).decision,
              LivenessDecision(Denied{LivenessCue::glossGlare}));
}

/// One face's turn does not confirm the next face.
TEST(LivenessAnalyzer, requiresAHeadTurnOfEveryFace) {
    LivenessAnalyzer analyzer(LivenessMode::strict, tuning, planarityTuning(LivenessMode::strict),
                              {LivenessCue::headTurn}, TimeInterval(3));
    double seconds = 0;
    const auto see = [&](std::uint8_t who, double yaw) {
        LivenessFrame turned = frame(seconds += 0.1, 1.0F);
        turned.yaw = yaw;
        turned.noseOffsetRatio = 0.5 * std::tan(yaw);
        turned.hasReliableLandmarks = true;
        return analyzer.ingest(turned, face(who)).decision;
    };
    for (int i = 0; i < 9; ++i)
        see(1, 0.05 * i);
    ASSERT_EQ(see(1, 0.5), LivenessDecision(Confirmed{}));
    for (int i = 0; i < 9; ++i)
        EXPECT_NE(see(2, 0), LivenessDecision(Confirmed{}));
    EXPECT_EQ(analyzer.lastSnapshot().decision,
              LivenessDecision(LivenessDecision::Waiting{LivenessNeeds::headTurn}));
}

TEST(LivenessAnalyzer, handsTheFramesReadingsToTheEvaluator) {
    auto analyzer = makeAnalyzer();
    LivenessFrame screen = frame(0, 1.0F);
    screen.moire = MoireSample{20, 128};
    screen.glare = GlareSample{200, 0.2F, 1};
    for (std::int64_t i = 0; i < std::max(tuning.moireFrames, tuning.glossFrames); ++i)
        analyzer.ingest(screen, face(1));
    // The pattern fired first, but only the enabled cue may deny.
    EXPECT_EQ(analyzer.lastSnapshot().decision, LivenessDecision(Denied{LivenessCue::glossGlare}));
    EXPECT_TRUE(analyzer.lastSnapshot().cueStates.at(LivenessCue::moire).hasFired);
}

}  // namespace
}  // namespace marrowby
