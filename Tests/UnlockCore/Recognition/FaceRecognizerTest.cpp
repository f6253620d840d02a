// SPDX-License-Identifier: Apache-2.0
#include "Tests/Fakes/FakeFaceVision.h"
#include "Tests/Fakes/FakeImaging.h"
#include "Tests/Fakes/ScriptedModels.h"
#include "UnlockCore/Recognition/FaceRecognizer.h"

#include <memory>
#include <optional>
#include <string>

#include <gtest/gtest.h>

namespace marrowby {
namespace {

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
    std::shared_ptr<ScriptedEmbedder> embedder = std::make_shared<ScriptedEmbedder>();
    FaceRecognizer recognizer{vision, imaging, embedder, 40};
    CameraFrame frame{.id = 1,
                      .image = *imaging.render(FakeSourceImage(400, 300), {0, 0, 400, 300}, 1),
                      .source = nullptr,
                      .sourceSize = {400, 300},
                      .timestamp = {}};
};

TEST_F(FaceRecognizerTest, TakesTheLargestFaceThatIsWideEnough) {
    add(0.0, 0.1, 0.0999, 0.9);
    EXPECT_EQ(chosen(), -1);
    add(0.125, 0.5, 0.1, 0.1);
    EXPECT_EQ(chosen(), 50) << "exactly wide enough";
    add(0.25, 0.5, 0.25);
    add(0.5, 0.5, 0.25);
    EXPECT_EQ(chosen(), 100) << "of equal ones the first";
}

TEST_F(FaceRecognizerTest, StaysWithTheFaceOfTheFrameBefore) {
    add(0.0, 0.4, 0.2, 0.2);   // middle at (0.1, 0.5)
    add(0.5, 0.25, 0.5, 0.5);  // middle at (0.75, 0.5)
    EXPECT_EQ(chosen(), 200);
    EXPECT_EQ(chosen(previous(0.2, 0.5)), 0);
    EXPECT_EQ(chosen(previous(0.1, 0.79)), 0) << "just near enough";
    EXPECT_EQ(chosen(previous(0.1, 0.81)), 200) << "none is near";
}

TEST_F(FaceRecognizerTest, SaysWhyThereIsNone) {
    EXPECT_EQ(error(), "No face in front of the camera.");
    add(0.5, 0.5, 0.2);
    embedder->fault = FaceModelError::PixelBuffer{};
    EXPECT_EQ(error(), "The face couldn’t be prepared for the model.");
    vision.details.landmarks.clear();
    EXPECT_EQ(error(), "The face couldn’t be lined up.");
    vision.detailsFault = "The lens is off.";
    EXPECT_EQ(error(), "The lens is off.");
}

}  // namespace
}  // namespace marrowby
