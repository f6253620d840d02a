// SPDX-License-Identifier: Apache-2.0
#include "UnlockCore/Foundation/Geometry.h"

#include <algorithm>
#include <cmath>

namespace marrowby {

double Rect::area() const {
    return isEmpty() ? 0 : width * height;
}

Rect intersection(const Rect& a, const Rect& b) {
    const double left = std::max(a.x, b.x);
    const double top = std::max(a.y, b.y);
    const Rect common{left, top, std::min(a.maxX(), b.maxX()) - left,
                      std::min(a.maxY(), b.maxY()) - top};
    return common.isEmpty() ? Rect{} : common;
}

double distance(const Point& a, const Point& b) {
    return std::hypot(a.x - b.x, a.y - b.y);
}

AffineTransform AffineTransform::then(const AffineTransform& next) const {
    return {.a = next.a * a + next.c * b,
            .b = next.b * a + next.d * b,
            .c = next.a * c + next.c * d,
            .d = next.b * c + next.d * d,
            .tx = next.a * tx + next.c * ty + next.tx,
            .ty = next.b * tx + next.d * ty + next.ty};
}

}  // namespace marrowby
