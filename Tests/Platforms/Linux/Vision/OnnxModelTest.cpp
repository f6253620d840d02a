// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/Vision/OnnxModel.h"
#include "Platforms/Linux/Vision/OpenCvNeuralModels.h"
#include "Tests/Fakes/SharedFolder.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <numeric>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace marrowby {
namespace {

using Order = NeuralModels::ChannelOrder;

/// The synthetic input of the reference outputs: channel c.
int pattern(int c, int y, int x) {
    return (c * 79 + y * 31 + x * 17 + ((x * y) % 29) * 3) % 256;
}

/// An image whose first channel, in the model's order, is channel 0 of the pattern.
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

struct OnnxModelTest : testing::Test {
    void SetUp() override {
        const auto shared = sharedFolder();
        if (!shared) GTEST_SKIP() << noSharedFolder;
        folder = *shared / "models";
        std::ifstream(folder / "reference-outputs.json") >> reference;
    }

    std::filesystem::path folder;
    nlohmann::json reference;
};

/// OpenCV's own arithmetic is the measure for ours.
TEST(OnnxModel, BothEnginesGiveTheSame) {
    std::vector<std::filesystem::path> folders{std::filesystem::path(MARROWBY_SOURCE_DIR) /
                                               "Models"};
    if (const auto shared = sharedFolder()) folders.push_back(*shared / "models");
    int compared = 0;
    for (const auto& folder : folders) {
        for (const auto& entry : std::filesystem::directory_iterator(folder)) {
            if (entry.path().extension() != ".onnx") continue;
            SCOPED_TRACE(entry.path().filename());
            const auto file = OnnxFile::read(entry.path());
            ASSERT_TRUE(file) << file.error();
            std::vector<OnnxModel::Input> inputs;
            for (const OnnxFile::Value& input : file->inputs) {
                // The finders take any size.
                const bool isFixed = input.shape[2] > 0 && input.shape[2] < 320;
                inputs.push_back({input.name,
                                  isFixed ? static_cast<int>(input.shape[3]) : 160,
                                  isFixed ? static_cast<int>(input.shape[2]) : 96,
                                  {}});
                for (int c = 0; c < 3; ++c) {
                    for (int y = 0; y < inputs.back().height; ++y) {
                        for (int x = 0; x < inputs.back().width; ++x)
                            inputs.back().planes.push_back(static_cast<float>(pattern(c, y, x)));
                    }
                }
            }
            auto ours = OnnxModel::load(*file);
            auto openCvs = OnnxModel::load(*file, OnnxModel::Engine::openCv);
            ASSERT_TRUE(ours && openCvs);
            EXPECT_EQ(ours->engine(), OnnxModel::Engine::oneDnn);
            EXPECT_EQ(openCvs->engine(), OnnxModel::Engine::openCv);
            const auto expected = openCvs->run(inputs);
            // The second run finds memory that the first has used.
            ASSERT_TRUE(ours->run(inputs));
            const auto outputs = ours->run(inputs);
            ASSERT_TRUE(outputs && expected);
            ASSERT_EQ(outputs->size(), expected->size());
            for (std::size_t i = 0; i < outputs->size(); ++i) {
                const auto& [name, values] = (*outputs)[i];
                ASSERT_EQ(values.size(), (*expected)[i].values.size()) << name;
                for (std::size_t j = 0; j < values.size(); ++j)
                    ASSERT_NEAR(values[j], (*expected)[i].values[j], 1e-4) << name << " " << j;
            }
            ++compared;
        }
    }
    EXPECT_GE(compared, 4);
}

TEST_F(OnnxModelTest, ModelsGiveTheReferenceOutputs) {
    const nlohmann::json& embedder = reference["Embedder128"];
    const nlohmann::json& landmarks = reference["Landmarks98"];
    const struct {
        const char* file;
        Order order;
        std::vector<NeuralInput> inputs;
        nlohmann::json begins;
        nlohmann::json sums;
        double tolerance;
    } cases[] = {
        {"Embedder128.onnx",
         Order::rgb,
         {{"image", patternImage(112, Order::rgb)}},
         {{"embedding", embedder["first8"]}},
         {{"embedding", embedder["sum"]}},
         1e-3},
        {"Landmarks98.onnx",
         Order::bgr,
         {{"image", patternImage(112, Order::bgr)}},
         {{"landmarks", landmarks["first8"]}},
         {{"landmarks", landmarks["sum"]}},
         1e-3},
        {"MiniFASNet.onnx",
         Order::bgr,
         {{"crop27", patternImage(80, Order::bgr)}, {"crop40", patternImage(80, Order::bgr, true)}},
         reference["MiniFASNet"],
         {},
         1e-4},
    };
    for (const auto& [file, order, inputs, begins, sums, tolerance] : cases) {
        SCOPED_TRACE(file);
        const auto model = OpenCvNeuralModels().load(folder / file, {.channelOrder = order});
        ASSERT_TRUE(model) << model.error();
        const auto outputs = (*model)->predict(inputs);
        ASSERT_TRUE(outputs) << outputs.error();
        for (const NeuralOutput& output : *outputs) {
            const nlohmann::json& begin = begins.at(output.name);
            ASSERT_GE(output.values.size(), begin.size());
            for (std::size_t i = 0; i < begin.size(); ++i)
                EXPECT_NEAR(output.values[i], begin[i].get<float>(), tolerance) << i;
            if (!sums.contains(output.name)) continue;
            EXPECT_NEAR(sum(output.values), sums[output.name].get<double>(), 10 * tolerance);
        }
    }
}

TEST_F(OnnxModelTest, TheDetectorTakesOtherInputSizesThanItsFileDeclares) {
    const auto file = OnnxFile::read(folder / "face_detection_yunet_2023mar.onnx");
    ASSERT_TRUE(file);
    auto model = OnnxModel::load(*file);
    ASSERT_TRUE(model);
    OnnxModel::Input input{"input", 320, 256, {}};
    for (int c = 0; c < 3; ++c) {
        for (int y = 0; y < input.height; ++y) {
            for (int x = 0; x < input.width; ++x) {
                input.planes.push_back(static_cast<float>(pattern(c, y, x)));
            }
        }
    }
    const auto outputs = model->run({&input, 1});
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
    EXPECT_FALSE(model->run({&input, 1})) << "no multiple of 32";
    input.planes.pop_back();
    EXPECT_FALSE(model->run({&input, 1})) << "a value is missing";
}

}  // namespace
}  // namespace marrowby
