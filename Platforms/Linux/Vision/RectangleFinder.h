#pragma once

#include "UnlockCore/Foundation/Bitmap.h"
#include "UnlockCore/Foundation/Geometry.h"
#include "UnlockCore/Platform/FaceVision.h"

#include <optional>
#include <vector>

namespace marrowby {

/// The boxes around things with four straight sides, in pixels with the origin at the top-left, the
/// largest first; nothing for a picture that cannot be read. The lowest side may lie below the
/// picture where nothing is seen all round. The confidence is the share of the outline where the
/// picture has an edge, and at most half as much again as of its least seen side. May throw
/// cv::Exception.
[[nodiscard]] std::optional<std::vector<Rect>> findRectangles(const Bitmap& image,
                                                              const RectangleRequest& request);

}  // namespace marrowby
