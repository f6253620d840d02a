// SPDX-License-Identifier: Apache-2.0
#include "UnlockCore/Recognition/CameraFrame.h"

#include <algorithm>

namespace marrowby {

std::optional<Bitmap> faceCrop(const CameraFrame& frame, const Rect& face, double maximumLongEdge,
                               const Imaging& imaging) {
    const double scaleX = frame.sourceSize.width / frame.image.width();
    const double scaleY = frame.sourceSize.height / frame.image.height();
    constexpr double margin = faceCropMargin;
    const Rect roomy{face.x - margin * face.width, face.y - margin * face.height,
                     face.width * (1 + 2 * margin), face.height * (1 + 2 * margin)};
    const Rect inSource{roomy.x * scaleX, frame.sourceSize.height - roomy.maxY() * scaleY,
                        roomy.width * scaleX, roomy.height * scaleY};
    const Rect crop =
        intersection(inSource, {0, 0, frame.sourceSize.width, frame.sourceSize.height});
    if (crop.isEmpty() || !(maximumLongEdge > 0)) return std::nullopt;

    const double longEdge = std::max(crop.width, crop.height);
    const double scale = maximumLongEdge < longEdge ? maximumLongEdge / longEdge : 1;
    return imaging.render(*frame.source, crop, scale);
}

}  // namespace marrowby
