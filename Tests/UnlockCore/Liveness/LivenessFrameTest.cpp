#include "UnlockCore/Liveness/LivenessFrame.h"

#include <gtest/gtest.h>

namespace marrowby {
namespace {

TEST(LivenessFrame, takesWhatTheDetectorTells) {
    DetectedFace face;
    face.yaw = 0.25F;
    face.landmarks = FaceLandmarks{
        .regions = {{LandmarkRegion::nose, {{5, 6}}}, {LandmarkRegion::leftEye, {{1, 2}, {3, 4}}}},
        .leftPupil = Point{10, 20},
        .rightPupil = Point{13, 24}};
    const auto frame = livenessFrame(face, Date(TimeInterval(7)));
    EXPECT_EQ(frame.timestamp, Date(TimeInterval(7)));
    EXPECT_EQ(frame.yaw, 0.25);
    EXPECT_EQ(frame.interocularDistance, 5);
    EXPECT_TRUE(frame.hasReliableLandmarks);
    EXPECT_EQ(frame.landmarks, (std::vector<LandmarkPoint>{{{1, 2}, LandmarkRegion::leftEye, 0},
                                                           {{3, 4}, LandmarkRegion::leftEye, 1},
                                                           {{5, 6}, LandmarkRegion::nose, 0}}));
    EXPECT_FALSE(frame.antiSpoof || frame.glare || frame.moire || frame.deviceOverlapFraction);

    face.landmarks->rightPupil.reset();
    EXPECT_FALSE(livenessFrame(face, {}).hasReliableLandmarks) << "an eye is missing";
    face.landmarks.reset();
    EXPECT_TRUE(livenessFrame(face, {}).landmarks.empty());
}

}  // namespace
}  // namespace marrowby
