// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Foundation/Geometry.h"
#include "UnlockCore/Platform/FaceVision.h"

#include <map>
#include <optional>
#include <vector>

namespace marrowby {

/// A face's points, in image pixels with the origin at the top-left.
struct FaceLandmarks {
    /// Only regions with at least one point.
    std::map<LandmarkRegion, std::vector<Point>> regions;
    std::optional<Point> leftPupil;
    std::optional<Point> rightPupil;

    friend bool operator==(const FaceLandmarks&, const FaceLandmarks&) = default;
};

struct DetectedFace {
    /// Pixels, origin at the top-left.
    Rect boundingBox = {};
    /// The same in 0…1 of the image, origin at the bottom-left.
    Rect normalizedBoundingBox = {};
    /// Capture quality, 0…1, higher is better.
    std::optional<float> quality = std::nullopt;
    /// Radians; yaw positive to the person's left, pitch negative up.
    std::optional<float> yaw = std::nullopt;
    std::optional<float> roll = std::nullopt;
    std::optional<float> pitch = std::nullopt;
    std::optional<FaceLandmarks> landmarks = std::nullopt;
    /// Pixels of the image.
    Size imageSize = {};

    friend bool operator==(const DetectedFace&, const DetectedFace&) = default;
};

}  // namespace marrowby
