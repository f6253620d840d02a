#pragma once

#include "Platforms/Linux/Vision/Landmarks98Network.h"
#include "UnlockCore/Foundation/Geometry.h"

#include <optional>

namespace marrowby {

/// How a head is turned, seen along the line from the camera to it: a face that looks into the
/// camera from the picture's edge is not turned. Radians.
struct HeadPose {
    /// Positive to the person's left.
    float yaw = 0;
    /// Negative up.
    float pitch = 0;
    /// Positive anticlockwise in the picture.
    float roll = 0;
};

/// Fits a generic head to the points of a face. Nothing where no head fits.
[[nodiscard]] std::optional<HeadPose> headPose(const Landmarks98& points, const Size& imageSize);

}  // namespace marrowby
