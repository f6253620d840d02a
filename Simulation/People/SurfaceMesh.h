// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Simulation/People/Vector3.h"

#include <array>
#include <cstdint>
#include <functional>
#include <vector>

namespace marrowby {

/// Triangles, anticlockwise seen from outside in axes where z comes towards the eye.
struct SurfaceMesh {
    using Triangle = std::array<std::uint32_t, 3>;

    /// The planes between the cells on each axis, ascending; cells may differ in size.
    struct Grid {
        std::vector<float> x;
        std::vector<float> y;
        std::vector<float> z;
    };
    /// Negative inside. May overstate the distance twice.
    using Distance = std::function<float(const Vector3&)>;

    /// The surface where `distance` is 0, one point for each cell that it crosses: surface nets
    /// (https://doi.org/10.1007/BFb0056916). Blocks of cells far from the surface are skipped.
    [[nodiscard]] static SurfaceMesh extracted(const Grid& grid, const Distance& distance);

    /// Merges the points within each cube of `size`, where that is above 0.
    void coarsen(const std::function<float(const Vector3&)>& size);

    std::vector<Vector3> points;
    std::vector<Triangle> triangles;
};

}  // namespace marrowby
