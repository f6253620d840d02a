// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Platforms/Linux/Vision/Landmarks98Model.h"
#include "UnlockCore/Foundation/Geometry.h"

#include <optional>

namespace marrowby {

/// Head rotation relative to the line of sight: a face at the image's edge that looks into the
/// camera is not rotated. Radians.
struct HeadPose {
    /// Positive to the person's left.
    float yaw = 0;
    /// Negative up.
    float pitch = 0;
    /// Positive anticlockwise in the image.
    float roll = 0;
};

/// Fits a generic head to the landmarks. `nullopt` when the fit fails.
[[nodiscard]] std::optional<HeadPose> headPose(const Landmarks98& points, const Size& imageSize);

}  // namespace marrowby
