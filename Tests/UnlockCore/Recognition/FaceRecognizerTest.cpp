#include "Tests/Fakes/FakeFaceVision.h"
#include "Tests/Fakes/FakeImaging.h"
#include "UnlockCore/Recognition/FaceRecognizer.h"

#include <memory>
#include <optional>
#include <string>

#include <gtest/gtest.h>

namespace marrowby {
namespace {

/// Embeds every face alike, or fails.
class FixedEmbedder final : public FaceEmbedder {
  public:
    std::optional<FaceModelError> fault;

    [[nodiscard]] const std::string& modelIdentifier() const override { return name_; }
    [[nodiscard]] std::int64_t dimension() const override { return 2; }
    [[nodiscard]] std::expected<Embedding, FaceModelError> embed(const Bitmap& /*face*/) override {
        if (fault) return std::unexpected(*fault);
        return Embedding{1, 0};
    }

  private:
    std::string name_ = "fixed";
};

class FaceRecognizerTest : public testing::Test {
  protected:
    /// In parts of the picture.
    void add(double x, double y, double width, double height = 0.3) {
        vision.addFace({x, y, width, height}, {400, 300});
    }
    /// The x of the chosen face's box, in pixels; -1 for none.
    double chosen(const std::optional<DetectedFace>& previous = std::nullopt) {
        const auto recognition = recognizer.recognise(frame, previous);
        return recognition ? recognition->face.boundingBox.x : -1;
    }
    std::string error() { return description(recognizer.recognise(frame, std::nullopt).error()); }
    static DetectedFace previous(double x, double y) {
        return {.normalizedBoundingBox = {x - 0.1, y - 0.1, 0.2, 0.2}};
    }

    FakeFaceVision vision;
    FakeImaging imaging;
    std::shared_ptr<FixedEmbedder> embedder = std::make_shared<FixedEmbedder>();
    FaceRecognizer recognizer{vision, imaging, embedder, 40};
    CameraFrame frame{.id = 1,
                      .image = *imaging.render(FakeSourceImage(400, 300), {0, 0, 400, 300}, 1),
                      .source = nullptr,
                      .sourceSize = {400, 300},
                      .timestamp = {}};
};

TEST_F(FaceRecognizerTest, GivesEmbeddingCropAndFace) {
    add(0.5, 0.5, 0.2);
    const auto recognition = recognizer.recognise(frame, std::nullopt);
    ASSERT_TRUE(recognition);
    EXPECT_EQ(recognition->embedding, (Embedding{1, 0}));
    EXPECT_EQ(recognition->alignedImage.width(), 112);
    EXPECT_EQ(recognition->alignmentTier, AlignmentTier::fivePoint);
    EXPECT_EQ(recognition->face.boundingBox, (Rect{200, 60, 80, 90}));
}

TEST_F(FaceRecognizerTest, TakesTheLargestFaceAndOfEqualOnesTheFirst) {
    add(0.0, 0.5, 0.125);
    add(0.25, 0.5, 0.25);
    add(0.5, 0.5, 0.25);
    EXPECT_EQ(chosen(), 100);
}

TEST_F(FaceRecognizerTest, NarrowFacesAreNone) {
    add(0.5, 0.1, 0.0999, 0.9);
    EXPECT_EQ(error(), "No face in front of the camera.");
    add(0.25, 0.5, 0.1, 0.1);
    EXPECT_EQ(chosen(), 100) << "exactly wide enough";
}

TEST_F(FaceRecognizerTest, StaysWithTheFaceOfTheFrameBefore) {
    add(0.0, 0.4, 0.2, 0.2);   // middle at (0.1, 0.5)
    add(0.5, 0.25, 0.5, 0.5);  // middle at (0.75, 0.5)
    EXPECT_EQ(chosen(), 200);
    EXPECT_EQ(chosen(previous(0.2, 0.5)), 0);
    EXPECT_EQ(chosen(previous(0.1, 0.79)), 0) << "just near enough";
    EXPECT_EQ(chosen(previous(0.1, 0.81)), 200) << "none is near";
}

TEST_F(FaceRecognizerTest, ADistanceOfExactlyThreeTenthsIsNotNear) {
    add(0.0, 0.0, 0.2, 0.2);
    add(0.5, 0.25, 0.5, 0.5);
    DetectedFace before;
    before.normalizedBoundingBox = {0, 0.3, 0.2, 0.2};
    ASSERT_GE(distance(before.normalizedBoundingBox.centre(), {0.1, 0.1}), 0.3);
    EXPECT_EQ(chosen(before), 200);
}

TEST_F(FaceRecognizerTest, SaysWhyThereIsNone) {
    EXPECT_EQ(error(), "No face in front of the camera.");
    add(0.5, 0.5, 0.2);
    embedder->fault = FaceModelError::PixelBuffer{};
    EXPECT_EQ(error(), "The face couldn’t be prepared for the model.");
    vision.details.landmarks.clear();
    EXPECT_EQ(error(), "The face couldn’t be lined up.");
    vision.rectanglesFault = "The lens is off.";
    EXPECT_EQ(error(), "The lens is off.");
}

}  // namespace
}  // namespace marrowby
