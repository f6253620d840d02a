// SPDX-License-Identifier: Apache-2.0
#include "Tests/Fakes/FakeImaging.h"
#include "Tests/Fakes/FakeNeuralModels.h"
#include "UnlockCore/Liveness/MiniFASNet.h"
#include "UnlockCore/Recognition/SFaceEmbedder.h"

#include <array>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace marrowby {
namespace {

/// What Tools/prepare-coreml says of the models it makes.
nlohmann::json contracts() {
    constexpr const char* command =
        "/usr/bin/python3 '" MARROWBY_SOURCE_DIR "/Tools/prepare-coreml' --contract";
    std::string text;
    const std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen(command, "r"), pclose);
    std::array<char, 4096> part{};
    while (pipe && fgets(part.data(), part.size(), pipe.get()))
        text += part.data();
    return nlohmann::json::parse(text);
}

NeuralModelDescription description(const nlohmann::json& contract) {
    NeuralModelDescription result{.inputs = {}, .outputs = {}, .metadata = contract["metadata"]};
    for (const auto& input : contract["inputs"]) {
        result.inputs.push_back({.name = input["name"],
                                 .kind = NeuralFeature::Kind::image,
                                 .imageConstraint = {{input["width"], input["height"]}},
                                 .shape = {}});
    }
    for (const auto& [name, count] : contract["outputs"].items()) {
        result.outputs.push_back({.name = name,
                                  .kind = NeuralFeature::Kind::multiArray,
                                  .imageConstraint = std::nullopt,
                                  .shape = {1, count}});
    }
    return result;
}

TEST(CoreMLContract, isWhatTheLoadersAskFor) {
    const nlohmann::json all = contracts();
    ASSERT_EQ(all.size(), 2U);
    // The fake reads no files: any folder in which the two are there.
    const std::filesystem::path folder =
        std::filesystem::temp_directory_path() / "marrowby-contract-test";
    FakeNeuralModels models;
    const FakeImaging imaging;
    for (const auto& contract : all) {
        std::filesystem::create_directories(folder / contract["file"]);
        models.description = description(contract);
        if (contract["name"] == "SFace") {
            EXPECT_TRUE(SFaceEmbedder::load(folder, {}, models, imaging));
        } else {
            EXPECT_TRUE(MiniFASNet::load(folder, models));
        }
        const bool isBGR =
            models.loads.back().options.channelOrder == NeuralModels::ChannelOrder::bgr;
        for (const auto& input : contract["inputs"]) {
            EXPECT_EQ(input["colour_layout"], isBGR ? "BGR" : "RGB");
            EXPECT_EQ(input["scale"], 1.0);
            EXPECT_EQ(input["bias"], nlohmann::json::array({0.0, 0.0, 0.0}));
        }
    }
    std::filesystem::remove_all(folder);
}

}  // namespace
}  // namespace marrowby
