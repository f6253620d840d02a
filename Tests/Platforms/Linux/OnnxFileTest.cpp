#include "Platforms/Linux/OnnxFile.h"
#include "Platforms/Linux/OpenCvFaceVision.h"
#include "Platforms/Linux/OpenCvNeuralModels.h"
#include "Tests/Fakes/SharedFolder.h"

#include <cstddef>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace marrowby {
namespace {

/// A file that is gone after the test.
class TemporaryFile {
  public:
    explicit TemporaryFile(const std::string& bytes) {
        std::ofstream(path_, std::ios::binary) << bytes;
    }
    ~TemporaryFile() { std::filesystem::remove(path_); }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;
    [[nodiscard]] const std::filesystem::path& path() const { return path_; }

  private:
    std::filesystem::path path_ = std::filesystem::path(testing::TempDir()) / "marrowby-test.onnx";
};

TEST(OnnxFile, TellsNamesShapesAndMetadata) {
    const auto shared = sharedFolder();
    if (!shared) GTEST_SKIP() << noSharedFolder;
    const auto file = OnnxFile::read(*shared / "models" / "Embedder128.onnx");
    ASSERT_TRUE(file);
    ASSERT_EQ(file->inputs.size(), 1U) << "weights are no inputs";
    EXPECT_EQ(file->inputs[0].name, "image");
    EXPECT_TRUE(file->inputs[0].isFloatTensor);
    EXPECT_EQ(file->inputs[0].shape, (std::vector<std::int64_t>{1, 3, 112, 112}));
    ASSERT_EQ(file->outputs.size(), 1U);
    EXPECT_EQ(file->outputs[0].name, "embedding");
    EXPECT_EQ(file->metadata.at("marrowby.model.identifier"), "mobilefacenet-128-test-1");
}

TEST(OnnxFile, RefusesForeignFilesInOneSentence) {
    const std::string damaged = "The network “marrowby-test.onnx” is damaged or not an ONNX file.";
    const std::vector<std::pair<std::string, std::string>> cases{
        {"", damaged},
        {"this is a text, not a network", damaged},
        {std::string(4096, '\0'), damaged},
        {std::string("\x08\x07", 2), damaged},
    };
    for (const auto& [bytes, text] : cases) {
        const TemporaryFile file(bytes);
        const auto read = OnnxFile::read(file.path());
        ASSERT_FALSE(read);
        EXPECT_EQ(read.error(), text);
    }
    EXPECT_EQ(OnnxFile::read("nowhere/Missing.onnx").error(),
              "The network “Missing.onnx” isn’t there.");
    EXPECT_FALSE(OnnxFile::read(testing::TempDir())) << "a folder";
}

TEST(OnnxFile, RefusesAFileThatIsTooLarge) {
    const TemporaryFile file("");
    // Sparse: it takes no room.
    std::filesystem::resize_file(file.path(), OnnxFile::largestFile + 1);
    EXPECT_EQ(OnnxFile::read(file.path()).error(),
              "The network “marrowby-test.onnx” is too large.");
}

TEST(OnnxFile, ADamagedNetworkIsAnErrorNeverAnException) {
    const auto shared = sharedFolder();
    if (!shared) GTEST_SKIP() << noSharedFolder;
    std::ifstream stream(*shared / "models" / "face_detection_yunet_2023mar.onnx",
                         std::ios::binary);
    const std::string whole{std::istreambuf_iterator<char>(stream), {}};
    ASSERT_GT(whole.size(), 200'000U);
    OpenCvNeuralModels models;
    for (const std::size_t length : {10UZ, 5000UZ, whole.size() / 2, whole.size() - 1}) {
        const TemporaryFile file(whole.substr(0, length));
        const auto model = models.load(file.path(), {});
        ASSERT_FALSE(model) << length;
        EXPECT_FALSE(model.error().empty());
        EXPECT_FALSE(OpenCvFaceVision::load(file.path(), file.path()));
    }
    // Parses, and names nodes that nobody can run.
    std::string renamed = whole;
    for (std::size_t at = 0; (at = renamed.find("Conv", at)) != std::string::npos; at += 4) {
        renamed.replace(at, 4, "Cnov");
    }
    const TemporaryFile file(renamed);
    ASSERT_TRUE(OnnxFile::read(file.path()));
    const auto model = models.load(file.path(), {});
    ASSERT_FALSE(model);
    EXPECT_EQ(model.error(), "OpenCV can’t run this network.");
}

TEST(OnnxFile, ANetworkInTheWrongRoleIsRefused) {
    const auto shared = sharedFolder();
    if (!shared) GTEST_SKIP() << noSharedFolder;
    const auto models = *shared / "models";
    EXPECT_EQ(
        OpenCvFaceVision::load(models / "Embedder128.onnx", models / "Landmarks98.onnx").error(),
        "The network “Embedder128.onnx” is no YuNet face detector.");
    EXPECT_EQ(OpenCvFaceVision::load(models / "face_detection_yunet_2023mar.onnx",
                                     models / "Embedder128.onnx")
                  .error(),
              "The network “Embedder128.onnx” is no finder of face landmarks.");
}

}  // namespace
}  // namespace marrowby
