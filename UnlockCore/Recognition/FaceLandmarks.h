#pragma once

#include "UnlockCore/Foundation/Geometry.h"
#include "UnlockCore/Platform/LandmarkRegion.h"

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

}  // namespace marrowby
