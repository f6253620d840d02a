#include "Platforms/Linux/ImageFiles.h"
#include "Platforms/Linux/OpenCvFaceVision.h"
#include "Platforms/Linux/OpenCvImaging.h"
#include "Platforms/Linux/OpenCvNeuralModels.h"
#include "Tests/Fakes/SharedFolder.h"
#include "UnlockCore/Recognition/FaceEmbedding.h"
#include "UnlockCore/Recognition/FaceRecognizer.h"
#include "UnlockCore/Recognition/MeanPoint.h"
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
            networks, imaging);
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

    /// Every frame of a sequence, or every few, recognised as a look would.
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
    OpenCvNeuralModels networks;
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
        double pitchBias = 0;
        double worstQuality = 1;
        for (const Seen& frame : seen) {
            const DetectedFace& face = frame.recognition.face;
            ASSERT_TRUE(face.yaw && face.pitch && face.roll && face.quality);
            yawError += std::abs(*face.yaw - frame.yaw);
            pitchError += std::abs(*face.pitch - frame.pitch);
            pitchBias += *face.pitch - frame.pitch;
            EXPECT_LT(std::abs(*face.roll), 0.2);
            worstQuality = std::min(worstQuality, double{*face.quality});
            EXPECT_EQ(frame.recognition.alignmentTier, AlignmentTier::fivePoint);
        }
        const double scale = degrees / static_cast<double>(seen.size());
        std::printf("%s: yaw %.1f°, pitch %.1f° off (bias %+.1f°), quality from %.2f\n", sequence,
                    yawError * scale, pitchError * scale, pitchBias * scale, worstQuality);
        EXPECT_LT(yawError * scale, 5) << sequence;
        EXPECT_LT(pitchError * scale, 5) << sequence;
        EXPECT_GT(worstQuality, 0.4) << sequence;
    }
}

TEST_F(OpenCvFaceVisionTest, TellsTheOwnerFromAStranger) {
    // Two samples of each of the nine poses, as an enrolment takes them.
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
        const auto [least, most] = std::ranges::minmax(values);
        std::printf("%s: similarity %.3f to %.3f\n", sequence.c_str(), double{least}, double{most});
        return std::pair{least, most};
    };
    EXPECT_GE(similarities("owner-look").first, 0.75);
    EXPECT_LT(similarities("stranger-look").second, 0.43);
}

TEST_F(OpenCvFaceVisionTest, LandmarksLieWhereTheFaceIs) {
    const Bitmap image = picture("owner-enrol", 10);
    const auto faces = FaceDetector(*vision).detect(image);
    ASSERT_TRUE(faces);
    ASSERT_EQ(faces->size(), 1U);
    const DetectedFace& face = faces->front();
    ASSERT_TRUE(face.landmarks);
    const auto& regions = face.landmarks->regions;
    EXPECT_EQ(regions.size(), 10U);
    EXPECT_EQ(regions.at(LandmarkRegion::faceContour).size(), 33U);
    EXPECT_EQ(regions.at(LandmarkRegion::medianLine).size(), 10U);
    const auto middle = [&](LandmarkRegion region) { return *meanPoint(regions.at(region)); };
    const Point leftEye = middle(LandmarkRegion::leftEye);
    const Point rightEye = middle(LandmarkRegion::rightEye);
    const Point nose = middle(LandmarkRegion::nose);
    const Point lips = middle(LandmarkRegion::outerLips);
    EXPECT_LT(leftEye.x, nose.x) << "the left of the picture";
    EXPECT_LT(nose.x, rightEye.x);
    EXPECT_LT(middle(LandmarkRegion::leftEyebrow).y, leftEye.y) << "counted from the top";
    EXPECT_LT(leftEye.y, nose.y);
    EXPECT_LT(nose.y, lips.y);
    EXPECT_LT(lips.y, regions.at(LandmarkRegion::faceContour)[16].y);
    EXPECT_LT(distance(*face.landmarks->leftPupil, leftEye), 6);
    const Rect& box = face.boundingBox;
    EXPECT_TRUE(box.x < leftEye.x && rightEye.x < box.maxX() && box.y < leftEye.y &&
                lips.y < box.maxY());
}

TEST_F(OpenCvFaceVisionTest, AFaceAtTheEdgeIsNotTurned) {
    // The face, cut so that it lies in a corner of a wider, black picture.
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
    std::printf("quality: sharp %.2f, blurred %.2f, small %.2f, dark %.2f\n", double{sharp},
                double{quality(*blurred)}, double{quality(*small)}, double{quality(dark)});
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

    // Details of a face that somebody else found.
    const std::vector<FaceRectangleObservation> foreign(1);
    const auto details = vision->faceDetails(picture("owner-enrol", 0), foreign);
    ASSERT_TRUE(details);
    EXPECT_EQ(details->captureQualities.at(0), std::nullopt);
    EXPECT_FALSE(details->landmarks.at(0));
}

TEST_F(OpenCvFaceVisionTest, TheStandInNeverPassesAsSFace) {
    const auto asSFace =
        SFaceEmbedder::load(folder / "models", {.fileName = "Embedder128.onnx"}, networks, imaging);
    ASSERT_FALSE(asSFace);
    EXPECT_EQ(description(asSFace.error()),
              "The face model isn’t the one this version expects: identifier "
              "mobilefacenet-128-test-1, expected sface-2021dec-coreml-1");
}

}  // namespace
}  // namespace marrowby
