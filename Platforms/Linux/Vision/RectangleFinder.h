// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Foundation/Bitmap.h"
#include "UnlockCore/Foundation/Geometry.h"
#include "UnlockCore/Platform/FaceVision.h"

#include <optional>
#include <vector>

namespace marrowby {

/// Bounding boxes of objects with four straight sides, largest first; pixels, origin at the
/// top-left. `nullopt` for an unreadable picture. The lower side may lie below the picture if no
/// full outline is found. Confidence: the fraction of the outline that lies on an edge, at most 1.5
/// times that of the least visible side. May throw cv::Exception.
[[nodiscard]] std::optional<std::vector<Rect>> findRectangles(const Bitmap& image,
                                                              const RectangleRequest& request);

}  // namespace marrowby
