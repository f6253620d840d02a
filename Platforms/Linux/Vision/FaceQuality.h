// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Platforms/Linux/Vision/HeadPose.h"
#include "UnlockCore/Foundation/Geometry.h"

#include <optional>

namespace cv {
class Mat;
}

namespace marrowby {

/// Capture quality, 0…1: the detector's score times factors (0…1) for sharpness, exposure, size and
/// head rotation. A sharp, evenly lit frontal face of 100 pixels comes near its score; 0.2 means
/// out of focus, dark or very small. May throw cv::Exception.
[[nodiscard]] float faceQuality(const cv::Mat& bgr, const Rect& box, double score,
                                const std::optional<HeadPose>& pose);

}  // namespace marrowby
