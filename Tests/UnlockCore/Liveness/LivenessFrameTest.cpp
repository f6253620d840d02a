// SPDX-License-Identifier: Apache-2.0
#include "UnlockCore/Liveness/LivenessFrame.h"

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

namespace marrowby {
namespace {

TEST(LivenessFrame, copiesTheDetectorsFindings) {
    DetectedFace face;
    face.yaw = 0.25F;
    face.imageSize = {30, 30};
    face.landmarks = FaceLandmarks{
        .regions = {{LandmarkRegion::nose, {{5, 6}}}, {LandmarkRegion::leftEye, {{1, 2}, {3, 4}}}},
        .leftPupil = Point{10, 20},
        .rightPupil = Point{13, 24}};
    const auto frame = livenessFrame(face, Date(TimeInterval(7)));
    EXPECT_EQ(frame.timestamp, Date(TimeInterval(7)));
    EXPECT_EQ(frame.yaw, 0.25);
    EXPECT_EQ(frame.interocularDistance, 5);
    EXPECT_TRUE(frame.hasReliableLandmarks);
    // The eyes' middle is (11.5, 22), their line points along (3, 4).
    EXPECT_NEAR(*frame.noseOffsetRatio, ((5 - 11.5) * 3 + (6 - 22) * 4) / 25.0, 1e-12);
    EXPECT_EQ(frame.landmarks, (std::vector<LandmarkPoint>{{{1, 2}, LandmarkRegion::leftEye, 0},
                                                           {{3, 4}, LandmarkRegion::leftEye, 1},
                                                           {{5, 6}, LandmarkRegion::nose, 0}}));
    EXPECT_FALSE(frame.antiSpoof || frame.glare || frame.moire || frame.deviceOverlapFraction);

    for (const Point& stray : {Point{31, 6}, Point{5, -1}, Point{std::nan(""), 6}}) {
        face.landmarks->regions[LandmarkRegion::faceContour] = {stray};
        EXPECT_TRUE(livenessFrame(face, {}).hasReliableLandmarks) << "a chin below the picture";
        face.landmarks->regions[LandmarkRegion::outerLips] = {stray};
        const auto unreliable = livenessFrame(face, {});
        EXPECT_FALSE(unreliable.hasReliableLandmarks || unreliable.noseOffsetRatio);
        face.landmarks->regions.erase(LandmarkRegion::outerLips);
    }
    face.yaw = std::numeric_limits<float>::quiet_NaN();
    EXPECT_FALSE(livenessFrame(face, {}).yaw);
    face.landmarks->rightPupil.reset();
    EXPECT_FALSE(livenessFrame(face, {}).hasReliableLandmarks) << "an eye is missing";
    face.landmarks.reset();
    EXPECT_TRUE(livenessFrame(face, {}).landmarks.empty());
}

}  // namespace
}  // namespace marrowby
