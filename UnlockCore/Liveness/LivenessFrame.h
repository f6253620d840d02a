// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Foundation/Geometry.h"
#include "UnlockCore/Foundation/Time.h"
#include "UnlockCore/Liveness/AntiSpoofScoring.h"
#include "UnlockCore/Liveness/ScreenCues.h"
#include "UnlockCore/Platform/FaceVision.h"
#include "UnlockCore/Recognition/DetectedFace.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace marrowby {

/// One landmark of a face in one frame; two frames' points are paired by region and index.
struct LandmarkPoint {
    /// Image pixels, origin at the top-left.
    Point point;
    LandmarkRegion region = LandmarkRegion::leftEye;
    std::int64_t indexInRegion = 0;

    friend bool operator==(const LandmarkPoint&, const LandmarkPoint&) = default;
};

/// One camera frame's measurements of its face; absent where not measured.
struct LivenessFrame {
    Date timestamp;
    /// Ordered by region and index.
    std::vector<LandmarkPoint> landmarks;
    /// Pixels.
    double interocularDistance = 0;
    /// Radians, as the face detector reports it.
    std::optional<double> yaw;
    /// How far the nose lies beside the middle of the eyes, along the line through them and towards
    /// the picture's right, in parts of their distance.
    std::optional<double> noseOffsetRatio;
    bool hasReliableLandmarks = false;
    /// Share of the face's box inside a phone- or tablet-shaped rectangle, 0…1.
    std::optional<double> deviceOverlapFraction;
    std::optional<GlareSample> glare;
    std::optional<MoireSample> moire;
    std::optional<AntiSpoofScore> antiSpoof;
};

/// The measurements that the detector provides; everything else is absent. Landmarks are reliable
/// when they show two eyes and a nose and all but the face's outline lie within the picture.
[[nodiscard]] LivenessFrame livenessFrame(const DetectedFace& face, Date timestamp);

}  // namespace marrowby
