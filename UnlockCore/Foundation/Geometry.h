// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <span>

namespace marrowby {

struct Point {
    double x = 0;
    double y = 0;

    friend bool operator==(const Point&, const Point&) = default;
};

struct Size {
    double width = 0;
    double height = 0;

    friend bool operator==(const Size&, const Size&) = default;
};

/// An axis-parallel rectangle from its corner of smallest x and y. The owner defines which way y
/// grows.
struct Rect {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;

    [[nodiscard]] double maxX() const { return x + width; }
    [[nodiscard]] double maxY() const { return y + height; }
    [[nodiscard]] Point centre() const { return {x + width / 2, y + height / 2}; }
    /// 0 for an empty rectangle.
    [[nodiscard]] double area() const;
    [[nodiscard]] bool isEmpty() const { return !(width > 0 && height > 0); }

    friend bool operator==(const Rect&, const Rect&) = default;
};

/// The common part of two rectangles; an empty Rect where they do not meet.
[[nodiscard]] Rect intersection(const Rect& a, const Rect& b);

[[nodiscard]] double distance(const Point& a, const Point& b);

/// The map x' = a x + c y + tx, y' = b x + d y + ty. The default is the identity.
struct AffineTransform {
    double a = 1;
    double b = 0;
    double c = 0;
    double d = 1;
    double tx = 0;
    double ty = 0;

    [[nodiscard]] Point apply(const Point& p) const {
        return {a * p.x + c * p.y + tx, b * p.x + d * p.y + ty};
    }
    /// The map that applies this one first and `next` to its result.
    [[nodiscard]] AffineTransform then(const AffineTransform& next) const;

    friend bool operator==(const AffineTransform&, const AffineTransform&) = default;
};

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
