#pragma once

#include "UnlockCore/Foundation/Geometry.h"
#include "UnlockCore/Platform/LandmarkRegion.h"

#include <cstdint>

namespace marrowby {

/// One landmark of a face in one frame; two frames' points are paired by region and index.
struct LandmarkPoint {
    /// Image pixels, origin at the top-left.
    Point point;
    LandmarkRegion region = LandmarkRegion::leftEye;
    std::int64_t indexInRegion = 0;

    friend bool operator==(const LandmarkPoint&, const LandmarkPoint&) = default;
};

}  // namespace marrowby
