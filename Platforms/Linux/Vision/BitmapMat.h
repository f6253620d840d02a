#pragma once

#include "UnlockCore/Foundation/Bitmap.h"

#include <optional>

#include <opencv2/core.hpp>

namespace marrowby {

/// A copy of the picture, or of a part that lies within it, as 8-bit red, green, blue, 255, over
/// opaque black. Nothing for a format that is not 8 bits per component of red, green and blue or
/// grey. May throw cv::Exception.
[[nodiscard]] std::optional<cv::Mat> rgbaMat(const Bitmap& bitmap);
[[nodiscard]] std::optional<cv::Mat> rgbaMat(const Bitmap& bitmap, const cv::Rect& part);

/// The same as 8-bit blue, green, red.
[[nodiscard]] std::optional<cv::Mat> bgrMat(const Bitmap& bitmap);

}  // namespace marrowby
