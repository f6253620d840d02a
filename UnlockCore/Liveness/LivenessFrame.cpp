#include "UnlockCore/Liveness/LivenessFrame.h"

#include "UnlockCore/Recognition/FaceAligner.h"

#include <cstdint>

namespace marrowby {

LivenessFrame livenessFrame(const DetectedFace& face, Date timestamp) {
    LivenessFrame frame;
    frame.timestamp = timestamp;
    if (face.yaw) frame.yaw = static_cast<double>(*face.yaw);
    if (!face.landmarks) return frame;

    for (const auto& [region, points] : face.landmarks->regions) {
        std::int64_t index = 0;
        for (const Point& point : points) {
            frame.landmarks.push_back({.point = point, .region = region, .indexInRegion = index++});
        }
    }
    if (const auto eyes = FaceAligner::eyePoints(*face.landmarks)) {
        frame.interocularDistance = distance(eyes->front(), eyes->back());
        frame.hasReliableLandmarks = face.landmarks->regions.contains(LandmarkRegion::nose);
    }
    return frame;
}

}  // namespace marrowby
