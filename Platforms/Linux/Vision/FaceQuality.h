#pragma once

#include "Platforms/Linux/Vision/HeadPose.h"
#include "UnlockCore/Foundation/Geometry.h"

#include <optional>

namespace cv {
class Mat;
}

namespace marrowby {

/// How well a face was captured, 0…1: the detector's score times four factors of 0…1 each, for
/// sharpness, exposure, size and how far the head is turned away. A sharp, evenly lit face of 100
/// pixels that looks at the camera comes near its score; 0.2 is a face that is out of focus, in the
/// dark or very small. May throw cv::Exception.
[[nodiscard]] float faceQuality(const cv::Mat& bgr, const Rect& box, double score,
                                const std::optional<HeadPose>& pose);

}  // namespace marrowby
