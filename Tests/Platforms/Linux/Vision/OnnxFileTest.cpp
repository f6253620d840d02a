// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/Vision/OnnxFile.h"
#include "Platforms/Linux/Vision/OpenCvFaceVision.h"
#include "Platforms/Linux/Vision/OpenCvNeuralModels.h"
#include "Tests/Fakes/SharedFolder.h"
#include "Tests/Platforms/Linux/TemporaryFolder.h"

#include <cstddef>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include <gtest/gtest.h>

namespace marrowby {
namespace {

struct TemporaryFile {
    explicit TemporaryFile(const std::string& bytes) {
        std::ofstream(path, std::ios::binary) << bytes;
    }
    TemporaryFolder folder;
    std::filesystem::path path = folder.path() / "test.onnx";
};

TEST(OnnxFile, RefusesForeignFilesInOneSentence) {
    for (const std::string& bytes : {std::string(), std::string("this is a text, not a model"),
                                     std::string(4096, '\0'), std::string("\x08\x07", 2)}) {
        const TemporaryFile file(bytes);
        const auto read = OnnxFile::read(file.path);
        ASSERT_FALSE(read);
        EXPECT_EQ(read.error(), "The model “test.onnx” is damaged or not an ONNX file.");
    }
    EXPECT_EQ(OnnxFile::read("nowhere/Missing.onnx").error(),
              "The model “Missing.onnx” isn’t there.");
    EXPECT_FALSE(OnnxFile::read(testing::TempDir())) << "a folder";
    const TemporaryFile file("");
    // A sparse file.
    std::filesystem::resize_file(file.path, OnnxFile::largestFile + 1);
    EXPECT_EQ(OnnxFile::read(file.path).error(), "The model “test.onnx” is too large.");
}

TEST(OnnxFile, acceptsOnlyTheFileWithTheGivenSum) {
    const std::filesystem::path models = std::filesystem::path(MARROWBY_SOURCE_DIR) / "Models";
    const auto sumOf = [&](const char* name) { return OnnxFile::read(models / name)->sha256(); };
    const std::string finder = sumOf("Finder.onnx");
    const std::string landmarks = sumOf("Landmarks.onnx");
    OpenCvNeuralModels neuralModels;
    const auto embedder = models / "Embedder.onnx";
    EXPECT_TRUE(neuralModels.load(embedder, {.sha256 = sumOf("Embedder.onnx")}));
    EXPECT_EQ(neuralModels.load(embedder, {.sha256 = finder}).error(),
              "The model “Embedder.onnx” was changed.");
    const auto load = [&](const std::string& finderSum, const std::string& landmarksSum) {
        return OpenCvFaceVision::load({models / "Finder.onnx", finderSum},
                                      {models / "Landmarks.onnx", landmarksSum});
    };
    EXPECT_TRUE(load(finder, landmarks));
    EXPECT_EQ(load(landmarks, landmarks).error(), "The model “Finder.onnx” was changed.");
    EXPECT_EQ(load(finder, finder).error(), "The model “Landmarks.onnx” was changed.");
}

TEST(OnnxFile, ADamagedModelIsAnErrorNeverAnException) {
    const auto shared = sharedFolder();
    if (!shared) GTEST_SKIP() << noSharedFolder;
    std::ifstream stream(*shared / "models" / "face_detection_yunet_2023mar.onnx",
                         std::ios::binary);
    const std::string whole{std::istreambuf_iterator<char>(stream), {}};
    ASSERT_GT(whole.size(), 200'000U);
    OpenCvNeuralModels neuralModels;
    for (const std::size_t length : {10UZ, 5000UZ, whole.size() / 2, whole.size() - 1}) {
        const TemporaryFile file(whole.substr(0, length));
        const auto model = neuralModels.load(file.path, {});
        ASSERT_FALSE(model) << length;
        EXPECT_FALSE(model.error().empty());
        EXPECT_FALSE(OpenCvFaceVision::load(file.path, file.path));
    }
    // Parses, but names unknown operators.
    std::string renamed = whole;
    for (std::size_t at = 0; (at = renamed.find("Conv", at)) != std::string::npos; at += 4) {
        renamed.replace(at, 4, "Cnov");
    }
    const TemporaryFile file(renamed);
    ASSERT_TRUE(OnnxFile::read(file.path));
    const auto model = neuralModels.load(file.path, {});
    ASSERT_FALSE(model);
    EXPECT_EQ(model.error(), "This model can’t be run.");
}

}  // namespace
}  // namespace marrowby
