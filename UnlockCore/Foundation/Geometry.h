#pragma once

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

/// An axis-parallel rectangle from its corner of smallest x and y. Which way y grows is the owner's
/// to say.
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

}  // namespace marrowby
