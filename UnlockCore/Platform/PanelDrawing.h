// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Foundation/Geometry.h"

#include <string>
#include <variant>
#include <vector>

namespace marrowby {

/// sRGB, each 0...1; not premultiplied.
struct PanelColor {
    double red = 0;
    double green = 0;
    double blue = 0;
    double alpha = 1;
    friend bool operator==(const PanelColor&, const PanelColor&) = default;
};

namespace panelshape {

/// Filled.
struct RoundedRectangle {
    Rect frame;
    double radius = 0;
    PanelColor color;
    friend bool operator==(const RoundedRectangle&, const RoundedRectangle&) = default;
};
/// A line of that width with round ends. Begin and length are parts of a full turn, clockwise from
/// the top; a length of 1 is a ring.
struct Arc {
    Point centre;
    double radius = 0;
    double begin = 0;
    double length = 1;
    double width = 0;
    PanelColor color;
    friend bool operator==(const Arc&, const Arc&) = default;
};
/// Round at its ends and corners.
struct Polyline {
    std::vector<Point> points;
    double width = 0;
    PanelColor color;
    friend bool operator==(const Polyline&, const Polyline&) = default;
};
struct Dot {
    Point centre;
    double radius = 0;
    PanelColor color;
    friend bool operator==(const Dot&, const Dot&) = default;
};
/// One line in the system's own font, from the left edge of the frame and in the middle of its
/// height, made smaller where it would be wider than the frame. The size is that of the font.
struct Text {
    std::string text;
    Rect frame;
    double size = 0;
    PanelColor color;
    friend bool operator==(const Text&, const Text&) = default;
};

}  // namespace panelshape

using PanelShape = std::variant<panelshape::RoundedRectangle, panelshape::Arc, panelshape::Polyline,
                                panelshape::Dot, panelshape::Text>;

/// What a panel shows, each shape above those before it; transparent elsewhere. In points from the
/// panel's upper left corner, y downwards.
using PanelDrawing = std::vector<PanelShape>;

}  // namespace marrowby
