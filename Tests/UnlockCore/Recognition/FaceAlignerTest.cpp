// SPDX-License-Identifier: Apache-2.0
#include "Tests/Fakes/FakeImaging.h"
#include "UnlockCore/Recognition/FaceAligner.h"

#include <array>
#include <cmath>
#include <limits>
#include <optional>
#include <span>
#include <vector>

#include <gtest/gtest.h>

namespace marrowby {
namespace {

constexpr std::span reference(FaceAligner::reference);

/// The reference's own points, as landmarks.
FaceLandmarks landmarks() {
    return {.regions = {{LandmarkRegion::leftEye, {{30, 50}, {46, 53}}},
                        {LandmarkRegion::rightEye, {reference[1]}},
                        {LandmarkRegion::nose, {reference[2]}},
                        {LandmarkRegion::outerLips, {{56, 90}, reference[3], reference[4]}}},
            .leftPupil = reference[0],
            .rightPupil = std::nullopt};
}

TEST(SimilarityFit, LeavesTheLeastSquaresError) {
    // A mirror image has no similarity; the best one maps everything to the middle.
    const std::array from{Point{0, 0}, Point{2, 0}, Point{0, 2}, Point{2, 2}};
    const std::array mirrored{Point{2, 0}, Point{0, 0}, Point{2, 2}, Point{0, 2}};
    const auto fit = fitSimilarity(from, mirrored);
    ASSERT_TRUE(fit);
    EXPECT_NEAR(distance(fit->apply({7, -5}), {1, 1}), 0, 1e-9);
}

TEST(SimilarityFit, RefusesWhatHasNone) {
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    const std::array same{Point{5, 5}, Point{5, 5}};
    const std::array bad{Point{nan, 5}, Point{5, 5}};
    EXPECT_FALSE(fitSimilarity(same, reference.first(2)));
    EXPECT_FALSE(fitSimilarity(bad, reference.first(2)));
    EXPECT_FALSE(fitSimilarity(reference.first(2), reference));
}

TEST(FaceAligner, EyesArePupilsElseTheEyesMiddle) {
    FaceLandmarks face = landmarks();
    EXPECT_EQ(FaceAligner::eyePoints(face), (std::array{reference[0], reference[1]}));
    face.leftPupil.reset();
    EXPECT_EQ(FaceAligner::eyePoints(face)->front(), (Point{38, 51.5}));
    face.rightPupil = Point{20, 51};
    EXPECT_EQ(FaceAligner::eyePoints(face)->front(), (Point{20, 51})) << "by x";
    face.rightPupil = Point{38, 51.5};
    EXPECT_FALSE(FaceAligner::eyePoints(face)) << "coincide";
    face.rightPupil.reset();
    face.regions.erase(LandmarkRegion::rightEye);
    EXPECT_FALSE(FaceAligner::eyePoints(face));
}

TEST(FaceAligner, MouthCornersAreTheFirstOutermostPoints) {
    FaceLandmarks face = landmarks();
    face.regions[LandmarkRegion::outerLips] = {{50, 90}, {41, 92}, {41, 95}, {70, 93}, {70, 91}};
    const auto points = FaceAligner::fivePoints(face);
    ASSERT_TRUE(points);
    EXPECT_EQ((*points)[3], (Point{41, 92}));
    EXPECT_EQ((*points)[4], (Point{70, 93}));
}

TEST(FaceAligner, FallsBackToTheEyes) {
    const FakeImaging imaging;
    const FaceAligner aligner(imaging);
    const Bitmap image = *imaging.render(FakeSourceImage(112, 112), {0, 0, 112, 112}, 1);
    DetectedFace face{.landmarks = landmarks(), .imageSize = {112, 112}};
    EXPECT_EQ(aligner.align(face, image)->tier, AlignmentTier::fivePoint);

    imaging.drawFailures = 1;
    EXPECT_EQ(aligner.align(face, image)->tier, AlignmentTier::twoPoint) << "drawing failed once";
    imaging.drawFailures = 2;
    EXPECT_FALSE(aligner.align(face, image));

    face.landmarks->regions.erase(LandmarkRegion::nose);
    EXPECT_EQ(aligner.align(face, image)->tier, AlignmentTier::twoPoint);
    face.landmarks.reset();
    EXPECT_FALSE(aligner.align(face, image));
}

TEST(FaceAligner, PutsThePointsWhereTheReferenceHasThem) {
    const FakeImaging imaging;
    // A picture of another size, the face in it turned and twice as large.
    const Bitmap image = *imaging.render(FakeSourceImage(300, 256), {0, 0, 300, 256}, 1);
    const double angle = 0.3;
    const AffineTransform toImage{.a = 2 * std::cos(angle),
                                  .b = 2 * std::sin(angle),
                                  .c = -2 * std::sin(angle),
                                  .d = 2 * std::cos(angle),
                                  .tx = 60,
                                  .ty = -10};
    FaceLandmarks points = landmarks();
    points.leftPupil = toImage.apply(reference[0]);
    for (auto& [region, list] : points.regions) {
        for (Point& point : list)
            point = toImage.apply(point);
    }
    const auto aligned = FaceAligner(imaging).align({.landmarks = points}, image);
    ASSERT_TRUE(aligned);
    EXPECT_EQ(aligned->image.width(), FaceAligner::side);
    EXPECT_EQ(aligned->image.format(), rgbx8);
    // The picture's pixels count its columns in red and its rows, from the bottom, in green.
    for (const Point crop : {Point{38.5, 51.5}, Point{56.5, 71.5}, Point{90.5, 20.5}}) {
        const Point seen = toImage.apply(crop);
        const auto offset = static_cast<std::size_t>(crop.y) * aligned->image.bytesPerRow() +
                            static_cast<std::size_t>(crop.x) * 4;
        EXPECT_NEAR(aligned->image.bytes()[offset], seen.x, 1);
        EXPECT_NEAR(aligned->image.bytes()[offset + 1], 256 - seen.y, 1);
    }
}

}  // namespace
}  // namespace marrowby
