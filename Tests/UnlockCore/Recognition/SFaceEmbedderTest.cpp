// SPDX-License-Identifier: Apache-2.0
#include "Tests/Fakes/FakeImaging.h"
#include "Tests/Fakes/FakeNeuralModels.h"
#include "UnlockCore/Recognition/SFaceEmbedder.h"

#include <cmath>
#include <filesystem>
#include <functional>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace marrowby {
namespace {

using Kind = NeuralFeature::Kind;

class SFaceEmbedderTest : public testing::Test {
  protected:
    SFaceEmbedderTest() {
        models.description = {
            .inputs = {{"image", Kind::image, NeuralFeature::ImageConstraint{112, 112}, {}}},
            .outputs = {{"embedding", Kind::multiArray, std::nullopt, {1, 128}}},
            .metadata = {{"marrowby.model.identifier", "sface-2021dec-coreml-1"}}};
        answer(std::vector<float>(128, 0.5F));
    }

    void answer(std::vector<float> values) {
        models.answer = [values = std::move(values)](std::span<const NeuralInput>) {
            return FakeNeuralModels::Outputs{{{"embedding", values}}};
        };
    }
    auto load() {
        // Any file that is there; the fake does not read it.
        return SFaceEmbedder::load(std::filesystem::path(MARROWBY_SOURCE_DIR),
                                   {.fileName = "CMakeLists.txt"}, models, imaging);
    }
    std::string loadError() { return description(load().error()); }
    std::string embedError() { return description((*load())->embed(face).error()); }

    FakeNeuralModels models;
    FakeImaging imaging;
    Bitmap face = *imaging.render(FakeSourceImage(112, 112), {0, 0, 112, 112}, 1);
};

TEST_F(SFaceEmbedderTest, EmbedsNormalized) {
    const auto loaded = load();
    ASSERT_TRUE(loaded);
    EXPECT_EQ(models.loads.at(0).options.channelOrder, NeuralModels::ChannelOrder::rgb);

    const auto embedding = (*loaded)->embed(face);
    ASSERT_TRUE(embedding);
    EXPECT_FLOAT_EQ(embedding->at(7), 1 / std::sqrt(128.F));
    const NeuralInput& input = models.predictions.at(0).at(0);
    EXPECT_EQ(input.name, "image");
    EXPECT_EQ(input.image.bytes()[2], face.bytes()[0]) << "red stands third";
}

TEST_F(SFaceEmbedderTest, RefusesAnythingButTheExpectedModel) {
    const std::string wrongModel = "The face model isn’t the one this version expects: ";
    const std::string wrongInput = "The face model takes the wrong input: ";
    const std::string wrongOutput = "The face model gave something unexpected: ";
    struct Case {
        std::function<void(NeuralModelDescription&)> change;
        std::string text;
    };
    const std::vector<Case> cases{
        {[](auto& d) { d.metadata["marrowby.model.identifier"] = "mobilefacenet-128-test-1"; },
         wrongModel + "identifier mobilefacenet-128-test-1, expected sface-2021dec-coreml-1"},
        {[](auto& d) { d.inputs.clear(); }, wrongInput + "no image input named image"},
        {[](auto& d) { d.inputs[0].imageConstraint = {112, 128}; },
         wrongInput + "112 × 128, expected 112 × 112"},
        {[](auto& d) { d.outputs[0].kind = Kind::other; },
         wrongOutput + "no multi-array output named embedding"},
        {[](auto& d) { d.outputs[0].shape = {std::int64_t{1} << 40, std::int64_t{1} << 40}; },
         wrongOutput + "9223372036854775807 values, expected 128"},
    };
    const NeuralModelDescription right = models.description;
    for (const Case& c : cases) {
        models.description = right;
        c.change(models.description);
        EXPECT_EQ(loadError(), c.text);
    }
    models.loadFault = "It is torn.";
    EXPECT_EQ(loadError(), "The face model couldn’t be loaded: It is torn.");
    const auto missing = SFaceEmbedder::load("no-such-folder", {}, models, imaging);
    EXPECT_EQ(description(missing.error()),
              "The face model isn’t in the app (SFace.mlmodelc). Reinstall Marrowby Unlock.");
}

TEST_F(SFaceEmbedderTest, RefusesUnusableOutputs) {
    const std::string unexpected = "The face model gave something unexpected: ";
    std::vector<float> values(128, 1);
    values[5] = std::numeric_limits<float>::quiet_NaN();
    answer(values);
    EXPECT_EQ(embedError(), unexpected + "not a usable vector");
    answer(std::vector<float>(128));
    EXPECT_EQ(embedError(), unexpected + "not a usable vector");
    answer(std::vector<float>(127, 1));
    EXPECT_EQ(embedError(), unexpected + "127 values, expected 128");
    models.answer = [](auto) { return FakeNeuralModels::Outputs{}; };
    EXPECT_EQ(embedError(), unexpected + "no embedding");
    models.answer = [](auto) -> FakeNeuralModels::Outputs { return std::unexpected("Too hot."); };
    EXPECT_EQ(embedError(), "Too hot.");
    imaging.convertFails = true;
    EXPECT_EQ(embedError(), "The face couldn’t be prepared for the model.");
    models.predictions.clear();
    face = *imaging.render(FakeSourceImage(100, 96), {0, 0, 100, 96}, 1);
    EXPECT_EQ(embedError(),
              "The face model takes the wrong input: a 100 × 96 face, expected 112 × 112");
    EXPECT_TRUE(models.predictions.empty());
}

}  // namespace
}  // namespace marrowby
