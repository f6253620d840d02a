#pragma once

#include "UnlockCore/Foundation/Bitmap.h"

#include <optional>

#include <opencv2/core/mat.hpp>

namespace marrowby {

/// A copy of the picture as 8-bit red, green, blue, 255, over opaque black. Nothing for a format
/// that is not 8 bits per component of red, green and blue or grey. May throw cv::Exception.
[[nodiscard]] std::optional<cv::Mat> rgbaMat(const Bitmap& bitmap);

/// The same as 8-bit blue, green, red.
[[nodiscard]] std::optional<cv::Mat> bgrMat(const Bitmap& bitmap);

}  // namespace marrowby
