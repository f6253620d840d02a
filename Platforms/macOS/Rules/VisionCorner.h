// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Foundation/Geometry.h"

/// Converts between Vision's bottom-left origin and the top-left origin used elsewhere.
namespace marrowby::visioncorner {

/// In 0…1 of the image.
[[nodiscard]] inline Rect fromTopLeft(const Rect& box) {
    return {box.x, 1 - box.y - box.height, box.width, box.height};
}

/// In pixels of an image of this height.
[[nodiscard]] inline Point fromTopLeft(const Point& point, double height) {
    return {point.x, height - point.y};
}

}  // namespace marrowby::visioncorner
