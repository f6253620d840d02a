#pragma once

#include "UnlockCore/Foundation/Geometry.h"

#include <optional>
#include <span>

namespace marrowby {

/// Nothing without points.
[[nodiscard]] inline std::optional<Point> meanPoint(std::span<const Point> points) {
    if (points.empty()) return std::nullopt;
    Point sum;
    for (const Point& point : points) {
        sum.x += point.x;
        sum.y += point.y;
    }
    const auto count = static_cast<double>(points.size());
    return Point{sum.x / count, sum.y / count};
}

}  // namespace marrowby
