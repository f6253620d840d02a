#pragma once

#include "UnlockCore/Foundation/Geometry.h"

/// Vision counts from the bottom-left of a picture; everybody else from its top-left.
namespace marrowby::visioncorner {

/// A box in 0…1 of the picture.
[[nodiscard]] inline Rect fromTopLeft(const Rect& box) {
    return {box.x, 1 - box.y - box.height, box.width, box.height};
}

/// A point in pixels of a picture of this height.
[[nodiscard]] inline Point fromTopLeft(const Point& point, double height) {
    return {point.x, height - point.y};
}

}  // namespace marrowby::visioncorner
