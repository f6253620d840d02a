#pragma once

#include "UnlockCore/Foundation/Geometry.h"

namespace marrowby {

/// A projective transform of the plane, its 3 x 3 matrix by rows.
struct Homography {
    double h11 = 1;
    double h12 = 0;
    double h13 = 0;
    double h21 = 0;
    double h22 = 1;
    double h23 = 0;
    double h31 = 0;
    double h32 = 0;
    double h33 = 1;

    /// A point that it would send to infinity stays where it is.
    [[nodiscard]] Point apply(const Point& point) const;

    friend bool operator==(const Homography&, const Homography&) = default;
};

}  // namespace marrowby
