// SPDX-License-Identifier: Apache-2.0
#include "Tests/Fakes/FakeFourierTransform.h"
#include "Tests/Fakes/FakeImaging.h"
#include "UnlockCore/Liveness/GlareCueExtractor.h"
#include "UnlockCore/Liveness/LivenessScoring.h"
#include "UnlockCore/Liveness/MoireCueExtractor.h"
#include "UnlockCore/Liveness/ScreenCues.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <random>

#include <gtest/gtest.h>

namespace marrowby {
namespace {

using Colour = std::array<int, 3>;

std::vector<std::uint8_t> picture(int width, int height,
                                  const std::function<Colour(int, int)>& colour) {
    std::vector<std::uint8_t> bytes;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            for (const int value : colour(x, y))
                bytes.push_back(static_cast<std::uint8_t>(value));
            bytes.push_back(0);
        }
    }
    return bytes;
}

TEST(GlareCueExtractor, countsBrightColourlessPixels) {
    const auto isHighlight = [](const Colour& colour) {
        const auto bytes = picture(1, 1, [&](int, int) { return colour; });
        return glarecueextractor::sample(bytes, 1, 1)->specularFraction == 1;
    };
    EXPECT_TRUE(isHighlight({235, 235, 235}));
    EXPECT_FALSE(isHighlight({235, 235, 234}));
    EXPECT_TRUE(isHighlight({235, 236, 255})) << "Cb is 9.9";
    EXPECT_FALSE(isHighlight({235, 236, 225})) << "Y is 234.6";
    EXPECT_FALSE(isHighlight({231, 237, 255})) << "Cb is 10.01";
    EXPECT_TRUE(isHighlight({255, 235, 235})) << "Cr is 10";
    EXPECT_FALSE(isHighlight({255, 235, 234})) << "Cr is 10.08";
}

TEST(GlareCueExtractor, distinguishesAPatchFromScatteredShine) {
    const auto level = [](const std::function<bool(int, int)>& isBright) {
        const auto bytes = picture(160, 160, [&](int x, int y) {
            return isBright(x, y) ? Colour{250, 250, 250} : Colour{90, 70, 60};
        });
        return livenessscoring::glossGlare(glarecueextractor::sample(bytes, 160, 160)).level;
    };
    // 8 % of the pixels, evenly over the cells of 20 x 20; and one whole cell.
    EXPECT_NEAR(level([](int x, int y) { return y % 20 * 20 + x % 20 < 32; }), 0.3, 1e-5);
    EXPECT_NEAR(level([](int x, int y) { return x < 20 && y < 20; }), 0.005625 / 0.07, 1e-5);
    const auto oneCell = picture(8, 8, [](int x, int y) {
        return x == 5 && y == 2 ? Colour{250, 250, 250} : Colour{0, 0, 0};
    });
    EXPECT_EQ(glarecueextractor::sample(oneCell, 8, 8), (GlareSample{8, 1.0F / 64, 1}));
    EXPECT_EQ(glarecueextractor::sample(oneCell, 3, 5)->specularFraction, 0);
}

/// Skin-like noise with a grid of this period in pixels, if any.
std::vector<float> skin(int width, int height, std::optional<double> period) {
    std::mt19937 random(7);
    std::normal_distribution<float> noise(0, 4);
    std::vector<float> values;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const double slope = 120 + 0.2 * x - 0.1 * y;
            const double grid = period ? 3 * std::sin((x + 0.4 * y) * 6.2832 / *period) : 0;
            values.push_back(static_cast<float>(slope + grid) + noise(random));
        }
    }
    return values;
}

TEST(MoireCueExtractor, detectsAGridInASmoothFace) {
    const FakeFourierTransform fourier;
    const auto contrast = [&](std::optional<double> period) {
        return moirecueextractor::sample(skin(200, 180, period), 200, 180, fourier)->peakContrast;
    };
    EXPECT_LT(contrast({}), 6);
    for (const double period : {3.1, 5.0, 9.0})
        EXPECT_GT(contrast(period), 18) << period;
}

TEST(MoireCueExtractor, analysesASquareOfTheMiddle) {
    FakeFourierTransform fourier;
    struct Case {
        int width;
        int height;
        std::int64_t side;
    };
    for (const Case& c : {Case{159, 200, 0}, Case{160, 200, 96}, Case{300, 213, 127},
                          Case{214, 300, 128}, Case{448, 448, 128}}) {
        const auto found =
            moirecueextractor::sample(skin(c.width, c.height, {}), c.width, c.height, fourier);
        EXPECT_EQ(found ? found->patchSize : 0, c.side) << c.width;
    }
    // Of a picture's bytes, four to a pixel: enough of them, too few, and no transform.
    const auto bytes = picture(160, 170, [](int x, int) { return Colour{x, x, x}; });
    EXPECT_EQ(moirecueextractor::sample(bytes, 160, 170, fourier)->patchSize, 96);
    EXPECT_FALSE(
        moirecueextractor::sample(std::span(bytes).first(bytes.size() - 4), 160, 170, fourier));
    fourier.fails = true;
    EXPECT_FALSE(moirecueextractor::sample(bytes, 160, 170, fourier));
}

TEST(MoireCueExtractor, requiresAPeakAboveRingAndNeighbours) {
    std::vector<float> power(FourierTransform::count, 1);
    const auto at = [&](int kx, int ky) -> float& {
        return power[static_cast<std::size_t>((ky + 64) % 64 * 64 + (kx + 64) % 64)];
    };
    const auto contrast = [&] {
        return moirecueextractor::peakContrast(
            std::span<const float, FourierTransform::count>(power.data(), power.size()));
    };
    EXPECT_EQ(contrast(), 1);
    at(-12, 5) = 40;
    EXPECT_EQ(contrast(), 40);
    // Part of a streak from the middle.
    at(-10, 4) = 20;
    EXPECT_EQ(contrast(), 2);
    at(2, 2) = at(30, 3) = at(0, -9) = 1e6F;
    EXPECT_EQ(contrast(), 2) << "too far in, too far out, and only half of a pair";
    power.assign(power.size(), 0);
    EXPECT_EQ(contrast(), 0);
    power[3] = std::nanf("");
    EXPECT_EQ(contrast(), 0);
}

TEST(ScreenCues, measuresRowsWithAndWithoutGaps) {
    const auto grid = picture(200, 220, [](int x, int y) {
        const int value = (x + y / 2) % 5 < 2 ? 250 : 60;
        return Colour{value, value, value};
    });
    constexpr std::size_t row = 800;
    constexpr std::size_t gap = 64;
    std::vector<std::uint8_t> gaps((row + gap) * 220, 255);
    for (std::size_t y = 0; y < 220; ++y)
        std::copy_n(grid.begin() + static_cast<std::ptrdiff_t>(y * row), row,
                    gaps.begin() + static_cast<std::ptrdiff_t>(y * (row + gap)));
    const FakeImaging imaging;
    const FakeFourierTransform fourier;
    const auto plain =
        ScreenCues::measure(*Bitmap::create(200, 220, row, rgbx8, grid), imaging, fourier);
    const auto padded =
        ScreenCues::measure(*Bitmap::create(200, 220, row + gap, rgba8, gaps), imaging, fourier);
    ASSERT_TRUE(plain.glare && plain.moire);
    EXPECT_GT(plain.moire->peakContrast, 18);
    EXPECT_EQ(padded.glare, plain.glare);
    EXPECT_EQ(padded.moire, plain.moire);
}

TEST(LivenessScoring, readsGlare) {
    struct Case {
        GlareSample sample;
        CueReading expected;
    };
    const Case cases[] = {
        {{400, 0.5F, 1.0F}, {1.0F, 1.0F}},      {{130, 0.08F, 1.0F / 64}, {0.3F, 1.0F}},
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
    for (const Case& c : {Case{6, 0}, Case{12, 0.5F}, Case{90, 1}}) {
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
}

}  // namespace
}  // namespace marrowby
