// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Foundation/Geometry.h"

#include <optional>
#include <span>
#include <vector>

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

/// Fits plane to plane between two sets of points, paired by position.
namespace landmarkgeometry {

/// The mean of the two middle values of an even count; 0 of none.
[[nodiscard]] double median(std::vector<double> values);

/// Least squares by the direct linear transform over normalised points (Hartley, "In Defense of the
/// Eight-Point Algorithm", 1997), each pair with its weight, or all alike without weights. Nothing
/// for fewer than 4 pairs, unequal counts, or points that fix no transform.
[[nodiscard]] std::optional<Homography> fit(std::span<const Point> source,
                                            std::span<const Point> destination,
                                            std::span<const double> weights = {});

/// The same, with outliers weighted down twice by Tukey's biweight.
[[nodiscard]] std::optional<Homography> robustFit(std::span<const Point> source,
                                                  std::span<const Point> destination);

/// How far each source point lands from its destination.
[[nodiscard]] std::vector<double> residuals(const Homography& homography,
                                            std::span<const Point> source,
                                            std::span<const Point> destination);

}  // namespace landmarkgeometry

}  // namespace marrowby
