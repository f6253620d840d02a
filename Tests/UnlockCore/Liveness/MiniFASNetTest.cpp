#include "Tests/Fakes/FakeNeuralModels.h"
#include "UnlockCore/Liveness/MiniFASNet.h"

#include <algorithm>
#include <fstream>
#include <functional>
#include <limits>

#include <gtest/gtest.h>

namespace marrowby {
namespace {

using Kind = NeuralFeature::Kind;
using Error = RealFaceModelError;

NeuralFeature image(std::string name, std::int64_t width, std::int64_t height) {
    return {.name = std::move(name),
            .kind = Kind::image,
            .imageConstraint = NeuralFeature::ImageConstraint{width, height},
            .shape = {}};
}

NeuralFeature array(std::string name) {
    return {std::move(name), Kind::multiArray, std::nullopt, {1, 3}};
}

NeuralModelDescription goodDescription() {
    return {.inputs = {image("crop27", 80, 80), image("crop40", 80, 80)},
            .outputs = {array("probabilities"), array("probabilities27"), array("probabilities40")},
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
        std::filesystem::create_directories(folder_);
        std::ofstream(folder_ / MiniFASNet::defaultFileName) << "network";
        std::ofstream(folder_ / "Own.onnx") << "network";
    }
    ~MiniFASNetTest() override { std::filesystem::remove_all(folder_); }

    auto load() { return MiniFASNet::load(folder_, models_); }

    std::expected<AntiSpoofScore, Error> score(const Rect& face = {30, 20, 20, 20}) {
        const auto bitmap =
            Bitmap::create(100, 90, 400, rgba8, std::vector<std::uint8_t>(36000, 9));
        return load().value()->score(RGBPixels::view(bitmap.value()).value(), face);
    }

    const std::filesystem::path folder_ =
        std::filesystem::path(testing::TempDir()) /
        (std::string("MiniFASNet.") +
         testing::UnitTest::GetInstance()->current_test_info()->name());
    FakeNeuralModels models_;
};

TEST_F(MiniFASNetTest, loadsTheNamedFileForBlueFirstPictures) {
    const auto loaded = load();
    ASSERT_TRUE(loaded);
    EXPECT_EQ((*loaded)->modelIdentifier(), "minifasnet-2020jul-coreml-1");
    ASSERT_TRUE(
        MiniFASNet::load(folder_, models_, NeuralModels::ComputeUnits::processorOnly, "Own.onnx"));
    ASSERT_EQ(models_.loads.size(), 2U);
    EXPECT_EQ(models_.loads[0].file, folder_ / "MiniFASNet.mlmodelc");
    EXPECT_EQ(models_.loads[0].options.computeUnits, NeuralModels::ComputeUnits::all);
    EXPECT_EQ(models_.loads[0].options.channelOrder, NeuralModels::ChannelOrder::bgr);
    EXPECT_EQ(models_.loads[1].file, folder_ / "Own.onnx");
    EXPECT_EQ(models_.loads[1].options.computeUnits, NeuralModels::ComputeUnits::processorOnly);
}

TEST_F(MiniFASNetTest, refusesAFileThatIsMissingOrDoesNotLoad) {
    const auto missing = MiniFASNet::load(folder_ / "elsewhere", models_);
    ASSERT_FALSE(missing);
    EXPECT_EQ(missing.error(), Error(Error::NotFound{"MiniFASNet.mlmodelc"}));
    EXPECT_EQ(
        description(missing.error()),
        "The real-face model isn’t in the app (MiniFASNet.mlmodelc). Reinstall Marrowby Unlock.");
    EXPECT_TRUE(models_.loads.empty());

    models_.loadFault = "Broken file.";
    const auto broken = load();
    ASSERT_FALSE(broken);
    EXPECT_EQ(description(broken.error()), "The real-face model couldn’t be loaded: Broken file.");
}

TEST_F(MiniFASNetTest, refusesAnotherNetwork) {
    struct Case {
        std::function<void(NeuralModelDescription&)> damage;
        const char* text;
    };
    const Case cases[] = {
        {[](auto& model) { model = {}; },
         "The real-face model isn’t the one this version expects: identifier missing, expected "
         "minifasnet-2020jul-coreml-1"},
        {[](auto& model) { model.metadata["marrowby.model.identifier"] = "another-1"; },
         "The real-face model isn’t the one this version expects: identifier another-1, expected "
         "minifasnet-2020jul-coreml-1"},
        {[](auto& model) { model.inputs = {}; },
         "The real-face model takes the wrong input: no image input named crop27"},
        {[](auto& model) { model.inputs[1].kind = Kind::multiArray; },
         "The real-face model takes the wrong input: no image input named crop40"},
        {[](auto& model) { model.inputs[0].imageConstraint.reset(); },
         "The real-face model takes the wrong input: no image input named crop27"},
        {[](auto& model) { model.inputs[0].imageConstraint->width = 112; },
         "The real-face model takes the wrong input: crop27 is 112 × 80, expected 80 × 80"},
        {[](auto& model) { model.inputs[1].imageConstraint->height = 81; },
         "The real-face model takes the wrong input: crop40 is 80 × 81, expected 80 × 80"},
        {[](auto& model) { model.outputs[0].kind = Kind::other; },
         "The real-face model gave something unexpected: no multi-array output named "
         "probabilities"},
        {[](auto& model) { model.outputs.pop_back(); },
         "The real-face model gave something unexpected: no multi-array output named "
         "probabilities40"},
    };
    for (const Case& c : cases) {
        models_.description = goodDescription();
        c.damage(models_.description);
        const auto loaded = load();
        ASSERT_FALSE(loaded) << c.text;
        EXPECT_EQ(description(loaded.error()), c.text);
    }
}

TEST_F(MiniFASNetTest, feedsBothCropsAndReadsTheLiveClass) {
    EXPECT_EQ(score(), (AntiSpoofScore{.live = 0.75F, .live27 = 1.001F, .live40 = 0.5F}));
    ASSERT_EQ(models_.predictions.size(), 1U);
    const auto& inputs = models_.predictions.front();
    ASSERT_EQ(inputs.size(), 2U);
    EXPECT_EQ(inputs[0].name, "crop27");
    EXPECT_EQ(inputs[1].name, "crop40");
    for (const NeuralInput& input : inputs) {
        EXPECT_EQ(input.image.width(), 80);
        EXPECT_EQ(input.image.height(), 80);
        EXPECT_EQ(input.image.format(), bgrx8);
    }
}

TEST_F(MiniFASNetTest, takesTheTwoCropsAtTheirOwnScales) {
    // Red tells the column. The crops are 54 and 80 pixels wide about column 100.
    std::vector<std::uint8_t> bytes;
    for (int i = 0; i < 200 * 200; ++i) {
        for (const int byte : {i % 200, 0, 0, 255})
            bytes.push_back(static_cast<std::uint8_t>(byte));
    }
    const auto bitmap = Bitmap::create(200, 200, 800, rgba8, std::move(bytes));
    ASSERT_TRUE(load().value()->score(RGBPixels::view(bitmap.value()).value(), {90, 90, 20, 20}));
    const auto red = [&](std::size_t crop, std::size_t column) {
        return models_.predictions.front()[crop].image.bytes()[column * 4 + 2];
    };
    EXPECT_EQ(red(0, 0), 73);
    EXPECT_EQ(red(0, 79), 127);
    EXPECT_EQ(red(1, 0), 60);
    EXPECT_EQ(red(1, 79), 140);
}

TEST_F(MiniFASNetTest, refusesAFaceThatDoesNotFit) {
    const auto refused = score({30, 20, 0, 20});
    ASSERT_FALSE(refused);
    EXPECT_EQ(description(refused.error()),
              "The real-face model takes the wrong input: the face's box doesn't fit the frame");
    EXPECT_TRUE(models_.predictions.empty());
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
    models_.answer = [](auto) { return std::vector<NeuralOutput>(); };
    EXPECT_EQ(score().error(), Error(Error::UnexpectedOutput{"probabilities isn’t 3 values"}));
}

TEST_F(MiniFASNetTest, goesOnAfterAFailedPrediction) {
    const auto loaded = load();
    const auto bitmap = Bitmap::create(100, 90, 400, rgba8, std::vector<std::uint8_t>(36000, 9));
    const RGBPixels pixels = RGBPixels::view(bitmap.value()).value();
    models_.answer = [](auto) -> FakeNeuralModels::Outputs {
        return std::unexpected("The processor is on fire.");
    };
    const auto failed = (*loaded)->score(pixels, {30, 20, 20, 20});
    ASSERT_FALSE(failed);
    EXPECT_EQ(description(failed.error()), "The processor is on fire.");
    models_.answer = [](auto) { return goodOutputs(); };
    EXPECT_TRUE((*loaded)->score(pixels, {30, 20, 20, 20}));
}

}  // namespace
}  // namespace marrowby
