#pragma once

#include "UnlockCore/Foundation/Bitmap.h"
#include "UnlockCore/Foundation/Geometry.h"
#include "UnlockCore/Platform/FaceVision.h"

#include <optional>
#include <vector>

namespace marrowby {

/// The boxes around four-cornered outlines, in pixels with the origin at the top-left, the largest
/// first; nothing for a picture that cannot be read. The confidence is the share of its least seen
/// side where the picture has an edge. May throw cv::Exception.
[[nodiscard]] std::optional<std::vector<Rect>> findRectangles(const Bitmap& image,
                                                              const RectangleRequest& request);

}  // namespace marrowby
