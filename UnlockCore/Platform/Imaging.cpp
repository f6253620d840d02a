// SPDX-License-Identifier: Apache-2.0
#include "UnlockCore/Platform/Imaging.h"

#include <algorithm>
#include <cmath>

namespace marrowby {

namespace {

/// Bounds the memory of one picture.
constexpr int longestSide = 16384;

int rounded(double value) {
    return static_cast<int>(std::lround(std::clamp(value, 0.0, double{longestSide} + 1)));
}

}  // namespace

std::optional<RenderPlan> RenderPlan::make(const Size& extent, const Rect& crop, double scale) {
    const Rect inside = intersection(crop, {0, 0, extent.width, extent.height});
    if (inside.isEmpty() || !(scale > 0) || !std::isfinite(scale)) return std::nullopt;

    const int left = std::min(rounded(inside.x), rounded(extent.width) - 1);
    const int top = std::min(rounded(extent.height - inside.maxY()), rounded(extent.height) - 1);
    const int columns = std::max(1, rounded(inside.maxX()) - left);
    const int rows = std::max(1, rounded(extent.height - inside.y) - top);
    const int width = scale == 1 ? columns : std::max(1, rounded(inside.width * scale));
    const int height = scale == 1 ? rows : std::max(1, rounded(inside.height * scale));
    if (!isDrawable(width, height)) return std::nullopt;
    return RenderPlan{.part = {static_cast<double>(left), extent.height - top - rows,
                               static_cast<double>(columns), static_cast<double>(rows)},
                      .width = width,
                      .height = height};
}

bool isDrawable(int width, int height) {
    return width > 0 && height > 0 && width <= longestSide && height <= longestSide;
}

bool isDrawable(const AffineTransform& t) {
    return std::isfinite(t.a) && std::isfinite(t.b) && std::isfinite(t.c) && std::isfinite(t.d) &&
           std::isfinite(t.tx) && std::isfinite(t.ty);
}

}  // namespace marrowby
