// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/Vision/OnnxModelFiles.h"
#include "Tests/Fakes/SharedFolder.h"
#include "Tests/Platforms/Linux/TemporaryFolder.h"
#include "Unlock/Model/ModelPack.h"
#include "Unlock/Model/PublishedModels.h"

#include <fstream>
#include <functional>
#include <iterator>
#include <map>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace marrowby {
namespace {

using Json = nlohmann::json;

/// Empty files on disk, with metadata from the test.
class FakeModelFiles final : public ModelFiles {
  public:
    std::map<std::string, ModelFileFacts> known;

    [[nodiscard]] std::expected<ModelFileFacts, std::string> facts(
        const std::filesystem::path& file) const override {
        const auto found = known.find(file.filename().string());
        if (found == known.end()) return std::unexpected("unreadable");
        return found->second;
    }
};

class ModelPackTest : public testing::Test {
  protected:
    void SetUp() override {
        manifest["name"] = "test";
        for (const char* role : {"finder", "landmarks", "embedder", "realFace"}) {
            const std::string name = role;
            files.known[name + ".onnx"] = {
                .sha256 = name + " sum",
                .inputs = {{"image", {1, 3, 112, 112}}},
                .outputs = {{"out", {1, 128}}},
                .metadata = {{"marrowby.model.identifier", name + "-1"}}};
            manifest["models"].push_back(
                {{"role", name},
                 {"name", "The " + name},
                 {"file", name + ".onnx"},
                 {"identifier", name + "-1"},
                 {"sha256", name + " sum"},
                 {"inputs", {{{"name", "image"}, {"shape", {1, 3, 112, 112}}}}},
                 {"outputs", {{{"name", "out"}, {"shape", {1, 128}}}}}});
            std::ofstream(folder.path() / (name + ".onnx")) << "model";
        }
    }
    /// Empty if the pack is accepted.
    std::string refusal() {
        std::ofstream(folder.path() / "pack.json") << manifest;
        const auto pack = ModelPack::read(folder.path(), files);
        return pack ? "" : description(pack.error());
    }

    TemporaryFolder folder;
    FakeModelFiles files;
    Json manifest;
};

TEST_F(ModelPackTest, acceptsAWholePackAndNamesTheFaultOfOthers) {
    ASSERT_EQ(refusal(), "");
    const auto pack = ModelPack::read(folder.path(), files);
    EXPECT_EQ(pack->name, "test");
    EXPECT_EQ(pack->embedderFile, "embedder.onnx");
    EXPECT_EQ(pack->embedderIdentifier, "embedder-1");
    EXPECT_EQ(pack->realFaceFile, "realFace.onnx");
    EXPECT_EQ(pack->realFaceIdentifier, "realFace-1");
    EXPECT_EQ(pack->finderFile, "finder.onnx");
    EXPECT_EQ(pack->landmarksFile, "landmarks.onnx");
    EXPECT_EQ(pack->sums, (ModelSums{{"finder", "finder sum"},
                                     {"landmarks", "landmarks sum"},
                                     {"embedder", "embedder sum"},
                                     {"realFace", "realFace sum"}}));
    struct Case {
        std::function<void()> change;
        std::string said;
    };
    const auto models = [&]() -> Json& { return manifest["models"]; };
    const auto embedder = [&]() -> auto& { return files.known["embedder.onnx"]; };
    const std::vector<Case> cases{
        {[&] { models().erase(2); }, "the face model is missing"},
        {[&] { models()[0]["role"] = "something else"; }, "the face finder is missing"},
        {[&] { models()[2].erase("sha256"); }, "pack.json is damaged"},
        {[&] { models() = "none"; }, "pack.json is damaged"},
        {[&] { manifest.erase("name"); }, "pack.json is damaged"},
        {[&] { embedder().sha256 = "another sum"; }, "The embedder (embedder.onnx) was changed"},
        {[&] { files.known.erase("embedder.onnx"); }, "The embedder (embedder.onnx) was changed"},
        {[&] {
             files.known.erase("realFace.onnx");
             std::filesystem::remove(folder.path() / "realFace.onnx");
         },
         "The realFace (realFace.onnx) isn’t there"},
        {[&] { models()[1]["file"] = "../landmarks.onnx"; },
         "The landmarks (../landmarks.onnx) lies outside of the pack"},
        {[&] { embedder().metadata.clear(); },
         "The embedder (embedder.onnx) says it is “”, not “embedder-1”"},
        {[&] { embedder().inputs[0].shape.back() = 128; },
         "The embedder (embedder.onnx) takes other inputs than its description says"},
        {[&] { embedder().outputs[0].name = "fc1"; },
         "The embedder (embedder.onnx) gives other outputs than its description says"},
    };
    const auto wholeFiles = files.known;
    const Json whole = manifest;
    for (const Case& c : cases) {
        c.change();
        EXPECT_EQ(refusal(), "The model pack can’t be used: " + c.said + ".");
        for (const auto& [name, facts] : wholeFiles)
            files.known[name] = facts;
        manifest = whole;
    }
    std::filesystem::remove(folder.path() / "pack.json");
    EXPECT_EQ(ModelPack::read(folder.path(), files).error(),
              (ModelPackError{"pack.json isn’t there"}));
}

TEST_F(ModelPackTest, recognisesPublishedModelsByTheirSums) {
    std::ifstream source(MARROWBY_SOURCE_DIR "/Tools/modelpack/originals.py");
    const std::string originals{std::istreambuf_iterator<char>(source), {}};
    const auto models = [&]() -> Json& { return manifest["models"]; };
    for (const PublishedFile& file : publishedFiles) {
        EXPECT_NE(originals.find(file.sha256), std::string::npos) << file.sha256;
        for (Json& model : models()) {
            if (model["role"] == file.role) model["origin"].push_back({{"sha256", file.sha256}});
        }
    }
    files.known["finder.onnx"].sha256 = publishedFiles.front().sha256;
    models()[0]["sha256"] = publishedFiles.front().sha256;
    manifest["name"] = "standard";
    const Json whole = manifest;
    const auto title = [&] {
        EXPECT_EQ(refusal(), "");
        return ModelPack::read(folder.path(), files)->title();
    };
    EXPECT_EQ(title(), "standard, as published");

    const std::function<void()> changes[] = {
        [&] { models()[3]["origin"].erase(1); },
        [&] { models()[2]["origin"][0]["sha256"] = "another"; },
        [&] { models()[2]["origin"] = "somewhere"; },
        [&] { models()[1].erase("origin"); },
        [&] {
            files.known["finder.onnx"].sha256 = "another";
            models()[0]["sha256"] = "another";
        },
    };
    for (const auto& change : changes) {
        change();
        EXPECT_EQ(title(), "standard by its name only, not as published");
        manifest = whole;
        files.known["finder.onnx"].sha256 = publishedFiles.front().sha256;
    }
    manifest["name"] = "mine";
    EXPECT_EQ(title(), "mine");
}

TEST_F(ModelPackTest, acceptsTheRealModels) {
    const auto shared = sharedFolder();
    if (!shared) GTEST_SKIP() << noSharedFolder;
    const auto facts = OnnxModelFiles().facts(*shared / "models" / "MiniFASNet.onnx");
    ASSERT_TRUE(facts) << facts.error();
    EXPECT_EQ(facts->sha256, "6fb583552602beaaceb952ad8a33a229816ed3cdbed8b747e7021f7b80fb1226");
    EXPECT_EQ(facts->inputs, (std::vector<ModelFileFacts::Value>{{"crop27", {1, 3, 80, 80}},
                                                                 {"crop40", {1, 3, 80, 80}}}));
    EXPECT_EQ(facts->outputs.size(), 3U);
    EXPECT_EQ(facts->metadata.at("marrowby.model.identifier"), "minifasnet-2020jul-coreml-1");
    EXPECT_FALSE(OnnxModelFiles().facts(*shared / "models" / "NETWORKS.md"));
}

}  // namespace
}  // namespace marrowby
