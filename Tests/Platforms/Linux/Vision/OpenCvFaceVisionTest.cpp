// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/Pictures/ImageFiles.h"
#include "Platforms/Linux/Vision/OpenCvFaceVision.h"
#include "Platforms/Linux/Vision/OpenCvImaging.h"
#include "Platforms/Linux/Vision/OpenCvNeuralModels.h"
#include "Tests/Fakes/SharedFolder.h"
#include "UnlockCore/Recognition/FaceEmbedding.h"
#include "UnlockCore/Recognition/FaceRecognizer.h"
#include "UnlockCore/Recognition/SFaceEmbedder.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <fstream>
#include <map>
#include <memory>
#include <numbers>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace marrowby {
namespace {

constexpr const char* standInIdentifier = "mobilefacenet-128-test-1";

struct Seen {
    double yaw = 0;
    double pitch = 0;
    std::string pose;
    FaceRecognition recognition;
};

class OpenCvFaceVisionTest : public testing::Test {
  protected:
    void SetUp() override {
        const auto shared = sharedFolder();
        if (!shared) GTEST_SKIP() << noSharedFolder;
        folder = *shared;
        const auto models = folder / "models";
        auto loaded = OpenCvFaceVision::load(models / "face_detection_yunet_2023mar.onnx",
                                             models / "Landmarks98.onnx");
        ASSERT_TRUE(loaded) << loaded.error();
        vision = *std::move(loaded);
        auto embedder = SFaceEmbedder::load(
            models, {.fileName = "Embedder128.onnx", .modelIdentifier = standInIdentifier},
            neuralModels, imaging);
        ASSERT_TRUE(embedder) << description(embedder.error());
        recognizer = std::make_unique<FaceRecognizer>(*vision, imaging, *std::move(embedder), 40);
    }

    Bitmap picture(const std::string& sequence, int index) {
        std::array<char, 16> name{};
        (void)std::snprintf(name.data(), name.size(), "%04d.jpg", index);
        const auto source = readPicture(folder / "media" / sequence / name.data());
        EXPECT_TRUE(source) << source.error();
        const Size size = (*source)->extent();
        return *imaging.render(**source, {0, 0, size.width, size.height}, 1);
    }

    /// Recognises every `step`th frame of a sequence as a scan would.
    std::vector<Seen> watch(const std::string& sequence, int step = 1) {
        nlohmann::json truth;
        std::ifstream(folder / "media" / sequence / "truth.json") >> truth;
        std::vector<Seen> seen;
        std::optional<DetectedFace> previous;
        const auto& frames = truth["frames"];
        for (int index = 0; index < static_cast<int>(frames.size()); index += step) {
            const auto& frame = frames[static_cast<std::size_t>(index)];
            auto recognition = recognizer->recognise({.id = index,
                                                      .image = picture(sequence, index),
                                                      .source = nullptr,
                                                      .sourceSize = {},
                                                      .timestamp = {}},
                                                     previous);
            EXPECT_TRUE(recognition)
                << sequence << ' ' << index << ": " << description(recognition.error());
            if (!recognition) return seen;
            previous = recognition->face;
            seen.push_back({frame.value("yaw", 0.0), frame.value("pitch", 0.0),
                            frame.value("pose", ""), *std::move(recognition)});
        }
        return seen;
    }

    std::filesystem::path folder;
    OpenCvImaging imaging;
    OpenCvNeuralModels neuralModels;
    std::unique_ptr<OpenCvFaceVision> vision;
    std::unique_ptr<FaceRecognizer> recognizer;
};

TEST_F(OpenCvFaceVisionTest, FindsAnglesNearTheTruth) {
    constexpr double degrees = 180 / std::numbers::pi;
    for (const char* sequence : {"owner-enrol", "owner-look", "stranger-look"}) {
        const auto seen = watch(sequence);
        ASSERT_FALSE(seen.empty());
        double yawError = 0;
        double pitchError = 0;
        double worstQuality = 1;
        for (const Seen& frame : seen) {
            const DetectedFace& face = frame.recognition.face;
            ASSERT_TRUE(face.yaw && face.pitch && face.roll && face.quality);
            yawError += std::abs(*face.yaw - frame.yaw);
            pitchError += std::abs(*face.pitch - frame.pitch);
            EXPECT_LT(std::abs(*face.roll), 0.2);
            worstQuality = std::min(worstQuality, double{*face.quality});
            EXPECT_EQ(frame.recognition.alignmentTier, AlignmentTier::fivePoint);
        }
        const double scale = degrees / static_cast<double>(seen.size());
        EXPECT_LT(yawError * scale, 5) << sequence;
        EXPECT_LT(pitchError * scale, 5) << sequence;
        EXPECT_GT(worstQuality, 0.4) << sequence;
    }
}

TEST_F(OpenCvFaceVisionTest, TellsTheOwnerFromAStranger) {
    // Two samples of each of the nine poses, as in enrolment.
    std::map<std::string, std::vector<Embedding>> byPose;
    for (Seen& frame : watch("owner-enrol", 4)) {
        byPose[frame.pose].push_back(std::move(frame.recognition.embedding));
    }
    ASSERT_EQ(byPose.size(), 9U);
    std::vector<Embedding> samples;
    for (const auto& [pose, embeddings] : byPose) {
        samples.push_back(embeddings.back());
        samples.push_back(embeddings[embeddings.size() - 2]);
    }
    const auto enrolled = faceembedding::meanTemplate(samples);
    ASSERT_TRUE(enrolled);
    const auto similarities = [&](const std::string& sequence) {
        std::vector<float> values;
        for (const Seen& frame : watch(sequence, 2)) {
            values.push_back(faceembedding::cosine(frame.recognition.embedding, *enrolled));
        }
        return std::ranges::minmax(values);
    };
    EXPECT_GE(similarities("owner-look").min, 0.75);
    EXPECT_LT(similarities("stranger-look").max, 0.43);
}

TEST_F(OpenCvFaceVisionTest, AFaceAtTheEdgeIsNotTurned) {
    // The face, moved into a corner of a wider, black picture.
    const Bitmap image = picture("owner-enrol", 10);
    const auto wide = imaging.draw(image, 900, 360, {.tx = 500});
    ASSERT_TRUE(wide);
    const auto faces = vision->faceRectangles(*wide);
    ASSERT_TRUE(faces);
    ASSERT_EQ(faces->size(), 1U);
    EXPECT_GT(faces->front().normalizedBox.x, 0.6);
    EXPECT_LT(std::abs(*faces->front().yaw), 0.1);
    EXPECT_LT(std::abs(*faces->front().pitch), 0.15);
}

TEST_F(OpenCvFaceVisionTest, ABlurredOrDarkFaceHasLessQuality) {
    const Bitmap image = picture("owner-enrol", 10);
    const auto quality = [&](const Bitmap& shown) {
        const auto faces = vision->faceRectangles(shown);
        EXPECT_TRUE(faces && faces->size() == 1);
        if (!faces || faces->size() != 1) return -1.F;
        return *vision->faceDetails(shown, *faces)->captureQualities.at(0);
    };
    const auto small = imaging.draw(image, 96, 72, {.a = 0.2, .d = 0.2});
    const auto blurred = imaging.draw(*small, 480, 360, {.a = 5, .d = 5});
    std::vector<std::uint8_t> bytes(image.bytes().begin(), image.bytes().end());
    for (std::uint8_t& byte : bytes)
        byte /= 6;
    const Bitmap dark =
        *Bitmap::create(image.width(), image.height(), image.bytesPerRow(), rgbx8, bytes);
    const float sharp = quality(image);
    EXPECT_GT(sharp, 0.5);
    EXPECT_LT(quality(*blurred), sharp * 0.6);
    EXPECT_LT(quality(*small), sharp / 2);
    EXPECT_LT(quality(dark), sharp / 2);
}

TEST_F(OpenCvFaceVisionTest, APictureWithoutAFaceHasNone) {
    const std::vector<std::uint8_t> grey(std::size_t{640} * 360 * 4, 128);
    for (const auto& [width, height] : {std::pair{640, 360}, {31, 7}, {1, 1}}) {
        const Bitmap image =
            *Bitmap::create(width, height, static_cast<std::size_t>(width) * 4, rgba8, grey);
        const auto faces = vision->faceRectangles(image);
        ASSERT_TRUE(faces) << faces.error();
        EXPECT_TRUE(faces->empty());
    }
    const auto odd = Bitmap::create(8, 8, 8, {.bitsPerPixel = 8, .alpha = PixelFormat::Alpha::only},
                                    std::vector(64, std::uint8_t{}));
    ASSERT_TRUE(odd);
    EXPECT_FALSE(vision->faceRectangles(*odd)) << "a format that cannot be read";
}

}  // namespace
}  // namespace marrowby
