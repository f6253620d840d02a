// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Foundation/Bitmap.h"
#include "UnlockCore/Foundation/Geometry.h"
#include "UnlockCore/Foundation/Time.h"
#include "UnlockCore/Platform/Imaging.h"

#include <cstdint>
#include <memory>
#include <optional>

namespace marrowby {

/// One picture of the camera. Copies share the pixels; any thread may read it.
struct CameraFrame {
    /// Counts from 1 per camera manager.
    std::int64_t id = 0;
    /// The working image, rgba8.
    Bitmap image;
    /// The same picture at full resolution.
    std::shared_ptr<const SourceImage> source;
    /// Pixels of `source`.
    Size sourceSize;
    Date timestamp;
};

/// The margin of `faceCrop` on every side, as a share of the face's side.
inline constexpr double faceCropMargin = 0.15;

/// A face with some room around it, cut from the frame's full-resolution picture and no longer than
/// `maximumLongEdge`. `face` is in the working image's pixels with the origin at the top-left.
/// Nothing where it lies outside the picture or cannot be drawn.
[[nodiscard]] std::optional<Bitmap> faceCrop(const CameraFrame& frame, const Rect& face,
                                             double maximumLongEdge, const Imaging& imaging);

}  // namespace marrowby
