#include "Platforms/Linux/OpenCvImaging.h"
#include "Platforms/Linux/OpenCvNetwork.h"
#include "Platforms/Linux/OpenCvNeuralModels.h"
#include "Tests/Fakes/SharedFolder.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <fstream>
#include <map>
#include <numeric>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace marrowby {
namespace {

using Order = NeuralModels::ChannelOrder;

/// The computable picture that the reference outputs belong to: channel c of a network's input.
int pattern(int c, int y, int x) {
    return (c * 79 + y * 31 + x * 17 + ((x * y) % 29) * 3) % 256;
}

/// As an image whose first channel, in the network's order, is channel 0 of the pattern.
Bitmap patternImage(int side, Order order, bool flipped = false) {
    std::vector<std::uint8_t> bytes;
    for (int y = 0; y < side; ++y) {
        for (int x = 0; x < side; ++x) {
            for (int c = 0; c < 3; ++c) {
                const int channel = order == Order::bgr ? c : 2 - c;
                bytes.push_back(
                    static_cast<std::uint8_t>(pattern(channel, flipped ? side - 1 - y : y, x)));
            }
            bytes.push_back(0);
        }
    }
    return *Bitmap::create(side, side, static_cast<std::size_t>(side) * 4, bgrx8, std::move(bytes));
}

double sum(const std::vector<float>& values) {
    return std::accumulate(values.begin(), values.end(), 0.0);
}

class OpenCvNetworkTest : public testing::Test {
  protected:
    void SetUp() override {
        const auto shared = sharedFolder();
        if (!shared) GTEST_SKIP() << noSharedFolder;
        folder = *shared / "models";
        std::ifstream(folder / "reference-outputs.json") >> reference;
    }
    std::map<std::string, std::vector<float>> predict(const std::string& name, Order order,
                                                      const std::vector<NeuralInput>& inputs) {
        auto model = OpenCvNeuralModels().load(folder / (name + ".onnx"), {.channelOrder = order});
        EXPECT_TRUE(model) << model.error();
        std::map<std::string, std::vector<float>> values;
        if (!model) return values;
        auto outputs = (*model)->predict(inputs);
        EXPECT_TRUE(outputs) << outputs.error();
        if (!outputs) return values;
        for (auto& output : *outputs)
            values[output.name] = std::move(output.values);
        return values;
    }
    static void expectBegins(const std::vector<float>& values, const nlohmann::json& expected) {
        ASSERT_GE(values.size(), expected.size());
        for (std::size_t i = 0; i < expected.size(); ++i) {
            EXPECT_NEAR(values[i], expected[i].get<float>(), 1e-3) << i;
        }
    }

    std::filesystem::path folder;
    nlohmann::json reference;
};

TEST_F(OpenCvNetworkTest, TheEmbedderGivesItsReference) {
    const auto outputs =
        predict("Embedder128", Order::rgb, {{"image", patternImage(112, Order::rgb)}});
    const auto& embedding = outputs.at("embedding");
    expectBegins(embedding, reference["Embedder128"]["first8"]);
    EXPECT_NEAR(sum(embedding), reference["Embedder128"]["sum"].get<double>(), 0.01);
    EXPECT_NEAR(
        std::sqrt(std::inner_product(embedding.begin(), embedding.end(), embedding.begin(), 0.0)),
        reference["Embedder128"]["l2norm"].get<double>(), 0.01);
}

TEST_F(OpenCvNetworkTest, TheLandmarksGiveTheirReference) {
    const auto outputs =
        predict("Landmarks98", Order::bgr, {{"image", patternImage(112, Order::bgr)}});
    expectBegins(outputs.at("landmarks"), reference["Landmarks98"]["first8"]);
    EXPECT_NEAR(sum(outputs.at("landmarks")), reference["Landmarks98"]["sum"].get<double>(), 0.05);
}

TEST_F(OpenCvNetworkTest, TheDetectorTakesOtherSidesThanItsFileSays) {
    const auto file = OnnxFile::read(folder / "face_detection_yunet_2023mar.onnx");
    ASSERT_TRUE(file);
    auto network = OpenCvNetwork::load(*file);
    ASSERT_TRUE(network);
    OpenCvNetwork::Input input{"input", 320, 256, {}};
    for (int c = 0; c < 3; ++c) {
        for (int y = 0; y < input.height; ++y) {
            for (int x = 0; x < input.width; ++x) {
                input.planes.push_back(static_cast<float>(pattern(c, y, x)));
            }
        }
    }
    const auto outputs = network->run({&input, 1});
    ASSERT_TRUE(outputs);
    ASSERT_EQ(outputs->size(), 12U);
    for (const NeuralOutput& output : *outputs) {
        const auto& expected = reference["yunet_320x256"][output.name];
        std::size_t count = 1;
        for (const auto& dimension : expected["shape"])
            count *= dimension.get<std::size_t>();
        EXPECT_EQ(output.values.size(), count) << output.name;
        const double total = expected["sum"].get<double>();
        EXPECT_NEAR(sum(output.values), total, 1e-3 * std::abs(total) + 1e-4) << output.name;
    }

    input.height = 240;
    input.planes.resize(std::size_t{3} * 320 * 240);
    EXPECT_FALSE(network->run({&input, 1})) << "no multiple of 32";
    input.planes.pop_back();
    EXPECT_FALSE(network->run({&input, 1})) << "a value is missing";
}

TEST_F(OpenCvNetworkTest, DescribesImagesAndArrays) {
    const auto model = OpenCvNeuralModels().load(folder / "MiniFASNet.onnx", {});
    ASSERT_TRUE(model);
    const NeuralModelDescription& description = (*model)->description();
    ASSERT_EQ(description.inputs.size(), 2U);
    EXPECT_EQ(description.inputs[0].kind, NeuralFeature::Kind::image);
    ASSERT_TRUE(description.inputs[0].imageConstraint);
    EXPECT_EQ(description.inputs[0].imageConstraint->width, 80);
    EXPECT_EQ(description.outputs.at(0).kind, NeuralFeature::Kind::multiArray);
    EXPECT_EQ(description.outputs.at(0).shape, (std::vector<std::int64_t>{1, 3}));
    EXPECT_EQ(description.metadata.at("marrowby.model.identifier"), "minifasnet-2020jul-coreml-1");
}

TEST_F(OpenCvNetworkTest, AWrongInputIsAnErrorText) {
    const auto model = OpenCvNeuralModels().load(folder / "Embedder128.onnx", {});
    ASSERT_TRUE(model);
    const Bitmap image = patternImage(112, Order::rgb);
    EXPECT_EQ((*model)->predict(std::vector<NeuralInput>{}).error(), "The network got no “image”.");
    EXPECT_EQ((*model)->predict(std::vector<NeuralInput>{{"picture", image}}).error(),
              "The network got no “image”.");
    EXPECT_EQ((*model)
                  ->predict(std::vector<NeuralInput>{{"image", patternImage(100, Order::rgb)}})
                  .error(),
              "The network got a “image” of the wrong size.");
    EXPECT_TRUE((*model)->predict(std::vector<NeuralInput>{{"image", image}}))
        << "and it still works";
}

}  // namespace
}  // namespace marrowby
