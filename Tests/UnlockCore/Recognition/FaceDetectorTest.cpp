// SPDX-License-Identifier: Apache-2.0
#include "Tests/Fakes/FakeFaceVision.h"
#include "Tests/Fakes/FakeImaging.h"
#include "UnlockCore/Recognition/FaceDetector.h"

#include <optional>

#include <gtest/gtest.h>

namespace marrowby {
namespace {

class FaceDetectorTest : public testing::Test {
  protected:
    FakeFaceVision vision;
    FaceDetector detector{vision};
    Bitmap image = *FakeImaging().render(FakeSourceImage(200, 100), {0, 0, 200, 100}, 1);
};

TEST_F(FaceDetectorTest, TakesTheBoxToPixelsAndThePupilsToPoints) {
    vision.faces = {{.normalizedBox = {0.25, 0.25, 0.125, 0.25},
                     .yaw = 0.1F,
                     .roll = std::nullopt,
                     .pitch = -0.2F,
                     .handle = nullptr}};
    vision.details.captureQualities = {0.75F};
    vision.details.landmarks = {FaceLandmarkObservation{
        .regions = {{LandmarkRegion::nose, {{60, 30}, {62, 40}}}, {LandmarkRegion::leftEye, {}}},
        .leftPupil = {{50, 20}, {54, 16}},
        .rightPupil = {}}};
    const DetectedFace expected{
        .boundingBox = {50, 25, 25, 25},
        .normalizedBoundingBox = {0.25, 0.5, 0.125, 0.25},
        .quality = 0.75F,
        .yaw = 0.1F,
        .roll = std::nullopt,
        .pitch = -0.2F,
        .landmarks = FaceLandmarks{.regions = {{LandmarkRegion::nose, {{60, 30}, {62, 40}}}},
                                   .leftPupil = Point{52, 18},
                                   .rightPupil = std::nullopt},
        .imageSize = {200, 100}};
    EXPECT_EQ(detector.detect(image)->at(0), expected);
}

TEST_F(FaceDetectorTest, PairsDetailsByPosition) {
    vision.faces.resize(3);
    vision.details.captureQualities = {std::nullopt, 0.5F};
    vision.details.landmarks = {std::nullopt, std::nullopt, FaceLandmarkObservation{}};
    const auto faces = *detector.detect(image);
    ASSERT_EQ(faces.size(), 3U);
    EXPECT_EQ(faces[0].quality, std::nullopt);
    EXPECT_EQ(faces[1].quality, 0.5F);
    EXPECT_EQ(faces[2].quality, std::nullopt);
    EXPECT_FALSE(faces[1].landmarks);
    EXPECT_EQ(faces[2].landmarks, FaceLandmarks{});
}

}  // namespace
}  // namespace marrowby
