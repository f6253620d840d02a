// SPDX-License-Identifier: Apache-2.0
#include "UnlockCore/Liveness/LivenessFrame.h"

#include "UnlockCore/Foundation/Geometry.h"
#include "UnlockCore/Recognition/FaceAligner.h"

#include <cmath>
#include <cstdint>

namespace marrowby {

namespace {

/// Also false where it is not a number.
bool isInside(const Point& point, const Size& size) {
    return point.x >= 0 && point.y >= 0 && point.x <= size.width && point.y <= size.height;
}

/// Not used to measure motion; a chin or a forehead may lie outside the picture.
bool isOutline(LandmarkRegion region) {
    return region == LandmarkRegion::faceContour || region == LandmarkRegion::medianLine;
}

}  // namespace

LivenessFrame livenessFrame(const DetectedFace& face, Date timestamp) {
    LivenessFrame frame;
    frame.timestamp = timestamp;
    if (face.yaw && std::isfinite(*face.yaw)) frame.yaw = static_cast<double>(*face.yaw);
    if (!face.landmarks) return frame;

    bool areInside = true;
    for (const auto& [region, points] : face.landmarks->regions) {
        std::int64_t index = 0;
        for (const Point& point : points) {
            areInside = areInside && (isOutline(region) || isInside(point, face.imageSize));
            frame.landmarks.push_back({.point = point, .region = region, .indexInRegion = index++});
        }
    }
    const auto eyes = FaceAligner::eyePoints(*face.landmarks);
    const auto nose = face.landmarks->regions.find(LandmarkRegion::nose);
    if (!eyes || nose == face.landmarks->regions.end()) return frame;
    const auto& [first, second] = *eyes;
    frame.interocularDistance = distance(first, second);
    const auto tip = meanPoint(nose->second);
    frame.hasReliableLandmarks = areInside && isInside(first, face.imageSize) &&
                                 isInside(second, face.imageSize) && tip.has_value();
    if (!frame.hasReliableLandmarks) return frame;

    const Point middle{(first.x + second.x) / 2, (first.y + second.y) / 2};
    const double along =
        (tip->x - middle.x) * (second.x - first.x) + (tip->y - middle.y) * (second.y - first.y);
    frame.noseOffsetRatio = along / (frame.interocularDistance * frame.interocularDistance);
    return frame;
}

}  // namespace marrowby
