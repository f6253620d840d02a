#pragma once

#include "UnlockCore/Foundation/Geometry.h"

namespace marrowby {

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

}  // namespace marrowby
