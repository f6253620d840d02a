#include "UnlockCore/Liveness/LivenessScoring.h"

#include <span>

#include <gtest/gtest.h>

namespace marrowby {
namespace {

TEST(LivenessScoring, readsGlare) {
    struct Case {
        GlareSample sample;
        CueReading expected;
    };
    const Case cases[] = {
        {{130, 0.08F, 1.0F}, {1.0F, 1.0F}},     {{400, 0.5F, 1.0F}, {1.0F, 1.0F}},
        {{130, 0.08F, 0.3F}, {0.3F, 1.0F}},     {{130, 0.08F, 1.0F / 64}, {0.3F, 1.0F}},
        {{130, 0.045F, 0.65F}, {0.325F, 1.0F}}, {{130, 0.01F, 1.0F}, {0.0F, 1.0F}},
        {{90, 0.08F, 1.0F}, {1.0F, 0.5F}},      {{50, 0.08F, 1.0F}, {1.0F, 0.0F}},
    };
    for (const Case& c : cases) {
        const auto reading = livenessscoring::glossGlare(c.sample);
        EXPECT_NEAR(reading.level, c.expected.level, 1e-6F);
        EXPECT_NEAR(reading.confidence, c.expected.confidence, 1e-6F);
    }
}

TEST(LivenessScoring, readsMoireAndDeviceOverlap) {
    struct Case {
        double measured;
        float level;
    };
    for (const Case& c : {Case{0, 0}, Case{6, 0}, Case{12, 0.5F}, Case{18, 1}, Case{90, 1}}) {
        const auto contrast = static_cast<float>(c.measured);
        EXPECT_EQ(livenessscoring::moire(MoireSample{contrast, 128}), (CueReading{c.level, 1}));
    }
    for (const Case& c : {Case{-0.5, 0}, Case{0.25, 0.25F}, Case{1.5, 1}}) {
        EXPECT_EQ(livenessscoring::deviceDetected(c.measured), (CueReading{c.level, 1}));
    }
}

TEST(LivenessScoring, readsWhatIsAbsentAsNoEvidence) {
    for (const auto& [cue, reading] : livenessscoring::readings({}, {}, {})) {
        EXPECT_EQ(reading, CueReading{}) << rawValue(cue);
    }
    LivenessFrame frame;
    frame.moire = MoireSample{18, 128};
    const auto readings = livenessscoring::readings(std::span(&frame, 1), {}, {});
    EXPECT_EQ(readings.at(LivenessCue::moire), (CueReading{1, 1}));
    EXPECT_EQ(readings.at(LivenessCue::glossGlare), CueReading{});
}

}  // namespace
}  // namespace marrowby
