// SPDX-License-Identifier: Apache-2.0
#include "Tests/Fakes/FakeNeuralModels.h"
#include "UnlockCore/Liveness/MiniFASNet.h"

#include <algorithm>
#include <functional>
#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace marrowby {
namespace {

using Kind = NeuralFeature::Kind;
using Error = RealFaceModelError;

NeuralModelDescription goodDescription() {
    constexpr NeuralFeature::ImageConstraint size{80, 80};
    return {.inputs = {{"crop27", Kind::image, size, {}}, {"crop40", Kind::image, size, {}}},
            .outputs = {{"probabilities", Kind::multiArray, std::nullopt, {1, 3}},
                        {"probabilities27", Kind::multiArray, std::nullopt, {1, 3}},
                        {"probabilities40", Kind::multiArray, std::nullopt, {1, 3}}},
            .metadata = {{"marrowby.model.identifier", "minifasnet-2020jul-coreml-1"}}};
}

std::vector<NeuralOutput> goodOutputs() {
    // In another order than they are read in.
    return {{"probabilities40", {0.25F, 0.5F, 0.25F}},
            {"probabilities", {0.125F, 0.75F, 0.125F}},
            {"probabilities27", {-0.001F, 1.001F, 0}}};
}

class MiniFASNetTest : public testing::Test {
  protected:
    MiniFASNetTest() {
        models_.description = goodDescription();
        models_.answer = [](auto) { return goodOutputs(); };
    }

    auto load() {
        // Any file that is there; the fake does not read it.
        return MiniFASNet::load(MARROWBY_SOURCE_DIR, models_, NeuralModels::ComputeUnits::all,
                                "CMakeLists.txt");
    }

    std::expected<AntiSpoofScore, Error> score(const Rect& face = {30, 20, 20, 20}) {
        const auto bitmap =
            Bitmap::create(100, 90, 400, rgba8, std::vector<std::uint8_t>(36000, 9));
        return load().value()->score(RGBPixels::view(bitmap.value()).value(), face);
    }

    FakeNeuralModels models_;
};

TEST_F(MiniFASNetTest, refusesAnotherModel) {
    const std::string wrongModel = "The real-face model isn’t the one this version expects: ";
    const std::string wrongInput = "The real-face model takes the wrong input: ";
    const std::string wrongOutput = "The real-face model gave something unexpected: ";
    struct Case {
        std::function<void(NeuralModelDescription&)> damage;
        std::string text;
    };
    const Case cases[] = {
        {[](auto& model) { model = {}; },
         wrongModel + "identifier missing, expected minifasnet-2020jul-coreml-1"},
        {[](auto& model) { model.inputs[1].kind = Kind::multiArray; },
         wrongInput + "no image input named crop40"},
        {[](auto& model) { model.inputs[1].imageConstraint->height = 81; },
         wrongInput + "crop40 is 80 × 81, expected 80 × 80"},
        {[](auto& model) { model.outputs[0].kind = Kind::other; },
         wrongOutput + "no multi-array output named probabilities"},
        {[](auto& model) { model.outputs.pop_back(); },
         wrongOutput + "no multi-array output named probabilities40"},
    };
    for (const Case& c : cases) {
        models_.description = goodDescription();
        c.damage(models_.description);
        const auto loaded = load();
        ASSERT_FALSE(loaded) << c.text;
        EXPECT_EQ(description(loaded.error()), c.text);
    }
    models_.loadFault = "Broken file.";
    EXPECT_EQ(description(load().error()), "The real-face model couldn’t be loaded: Broken file.");
    EXPECT_EQ(MiniFASNet::load(MARROWBY_SOURCE_DIR, models_).error(),
              Error(Error::NotFound{"MiniFASNet.mlmodelc"}));
}

TEST_F(MiniFASNetTest, takesTheTwoCropsAtTheirOwnScalesAndReadsTheLiveClass) {
    // Red tells the column. The crops are 54 and 80 pixels wide about column 100.
    std::vector<std::uint8_t> bytes;
    for (int i = 0; i < 200 * 200; ++i) {
        for (const int byte : {i % 200, 0, 0, 255})
            bytes.push_back(static_cast<std::uint8_t>(byte));
    }
    const auto bitmap = Bitmap::create(200, 200, 800, rgba8, std::move(bytes));
    EXPECT_EQ(load().value()->score(RGBPixels::view(bitmap.value()).value(), {90, 90, 20, 20}),
              (AntiSpoofScore{.live = 0.75F, .live27 = 1.001F, .live40 = 0.5F}));
    EXPECT_EQ(models_.loads.at(0).options.channelOrder, NeuralModels::ChannelOrder::bgr);
    const auto& inputs = models_.predictions.at(0);
    ASSERT_EQ(inputs.size(), 2U);
    EXPECT_EQ(inputs[0].name, "crop27");
    EXPECT_EQ(inputs[1].name, "crop40");
    EXPECT_EQ(inputs[0].image.format(), bgrx8);
    const auto red = [&](std::size_t crop, std::size_t column) {
        return inputs[crop].image.bytes()[column * 4 + 2];
    };
    EXPECT_EQ(red(0, 0), 73);
    EXPECT_EQ(red(0, 79), 127);
    EXPECT_EQ(red(1, 0), 60);
    EXPECT_EQ(red(1, 79), 140);
}

TEST_F(MiniFASNetTest, refusesWhatAreNotThreeProbabilities) {
    struct Case {
        const char* output;
        std::vector<float> values;
        const char* text;
    };
    const Case cases[] = {
        {"probabilities", {0, 1}, "probabilities isn’t 3 values"},
        {"probabilities40", {0, 1, 0, 0}, "probabilities40 isn’t 3 values"},
        {"probabilities", {0, 1.0011F, 0}, "probabilities isn’t probabilities"},
        {"probabilities27", {-0.0011F, 1, 0}, "probabilities27 isn’t probabilities"},
        {"probabilities40",
         {0, std::numeric_limits<float>::quiet_NaN(), 0},
         "probabilities40 isn’t probabilities"},
    };
    for (const Case& c : cases) {
        models_.answer = [&](auto) {
            auto outputs = goodOutputs();
            std::ranges::find(outputs, c.output, &NeuralOutput::name)->values = c.values;
            return outputs;
        };
        const auto refused = score();
        ASSERT_FALSE(refused) << c.text;
        EXPECT_EQ(refused.error(), Error(Error::UnexpectedOutput{c.text}));
    }
    models_.answer = [](auto) -> FakeNeuralModels::Outputs { return std::unexpected("Too hot."); };
    EXPECT_EQ(description(score().error()), "Too hot.");
    models_.predictions.clear();
    EXPECT_EQ(description(score({30, 20, 0, 20}).error()),
              "The real-face model takes the wrong input: the face's box doesn't fit the frame");
    EXPECT_TRUE(models_.predictions.empty());
}

}  // namespace
}  // namespace marrowby
