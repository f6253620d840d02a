// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Foundation/Bitmap.h"

#include <optional>

#include <opencv2/core.hpp>

namespace marrowby {

/// Copies the picture, or a part that lies within it, as 8-bit RGBA, composed over opaque black.
/// `nullopt` unless the format has 8 bits per component, RGB or grey. May throw cv::Exception.
[[nodiscard]] std::optional<cv::Mat> rgbaMat(const Bitmap& bitmap);
[[nodiscard]] std::optional<cv::Mat> rgbaMat(const Bitmap& bitmap, const cv::Rect& part);

/// The same as 8-bit BGR.
[[nodiscard]] std::optional<cv::Mat> bgrMat(const Bitmap& bitmap);

}  // namespace marrowby
