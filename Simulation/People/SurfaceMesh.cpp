// SPDX-License-Identifier: Apache-2.0
#include "Simulation/People/SurfaceMesh.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <map>
#include <utility>

namespace marrowby {

namespace {

constexpr std::size_t blockSide = 4;
constexpr auto noPoint = std::numeric_limits<std::uint32_t>::max();

class Extraction {
  public:
    Extraction(const SurfaceMesh::Grid& grid, const SurfaceMesh::Distance& distance)
        : grid_(grid), distance_(distance), sizes_{grid.x.size(), grid.y.size(), grid.z.size()} {
        const std::size_t count = sizes_[0] * sizes_[1] * sizes_[2];
        values_.assign(count, std::numeric_limits<float>::quiet_NaN());
        cellPoints_.assign(count, noPoint);
    }

    SurfaceMesh run() {
        for (std::size_t z = 0; z + 1 < sizes_[2]; z += blockSide) {
            for (std::size_t y = 0; y + 1 < sizes_[1]; y += blockSide) {
                for (std::size_t x = 0; x + 1 < sizes_[0]; x += blockSide)
                    visitBlock({x, y, z});
            }
        }
        for (const Cell& cell : crossed_)
            connect(cell);
        return std::move(mesh_);
    }

  private:
    using Cell = std::array<std::size_t, 3>;

    [[nodiscard]] std::size_t index(const Cell& c) const {
        return (c[2] * sizes_[1] + c[1]) * sizes_[0] + c[0];
    }
    [[nodiscard]] Vector3 position(const Cell& c) const {
        return {grid_.x[c[0]], grid_.y[c[1]], grid_.z[c[2]]};
    }

    void visitBlock(const Cell& first) {
        Cell last{};
        for (std::size_t axis = 0; axis < 3; ++axis)
            last[axis] = std::min(first[axis] + blockSide, sizes_[axis] - 1);
        const Vector3 half = (position(last) - position(first)) * 0.5F;
        if (std::abs(distance_(position(first) + half)) > 2 * length(half) + 3) return;

        for (std::size_t z = first[2]; z <= last[2]; ++z) {
            for (std::size_t y = first[1]; y <= last[1]; ++y) {
                for (std::size_t x = first[0]; x <= last[0]; ++x) {
                    float& value = values_[index({x, y, z})];
                    if (std::isnan(value)) value = distance_(position({x, y, z}));
                }
            }
        }
        for (std::size_t z = first[2]; z < last[2]; ++z) {
            for (std::size_t y = first[1]; y < last[1]; ++y) {
                for (std::size_t x = first[0]; x < last[0]; ++x)
                    visitCell({x, y, z});
            }
        }
    }

    /// Puts a point into the middle of where the surface crosses the cell's edges.
    void visitCell(const Cell& cell) {
        std::array<float, 8> values{};
        std::array<Vector3, 8> corners{};
        std::size_t inside = 0;
        for (std::size_t i = 0; i < 8; ++i) {
            const Cell corner{cell[0] + (i & 1U), cell[1] + ((i >> 1U) & 1U), cell[2] + (i >> 2U)};
            values[i] = values_[index(corner)];
            corners[i] = position(corner);
            if (values[i] < 0) ++inside;
        }
        if (inside == 0 || inside == 8) return;
        Vector3 sum;
        float crossings = 0;
        for (std::size_t i = 0; i < 8; ++i) {
            for (std::size_t bit = 1; bit < 8; bit <<= 1U) {
                const std::size_t j = i | bit;
                if (j == i || (values[i] < 0) == (values[j] < 0)) continue;
                sum = sum + mix(corners[i], corners[j], values[i] / (values[i] - values[j]));
                crossings += 1;
            }
        }
        cellPoints_[index(cell)] = static_cast<std::uint32_t>(mesh_.points.size());
        mesh_.points.push_back(sum * (1 / crossings));
        crossed_.push_back(cell);
    }

    /// Joins the four cells around each of the cell's three first edges that the surface crosses.
    void connect(const Cell& cell) {
        const float here = values_[index(cell)];
        for (std::size_t axis = 0; axis < 3; ++axis) {
            const std::size_t u = (axis + 1) % 3;
            const std::size_t v = (axis + 2) % 3;
            if (cell[u] == 0 || cell[v] == 0) continue;
            Cell next = cell;
            ++next[axis];
            const float there = values_[index(next)];
            if ((here < 0) == (there < 0) || std::isnan(there)) continue;
            std::array<std::uint32_t, 4> around{};
            for (std::size_t i = 0; i < 4; ++i) {
                Cell neighbour = cell;
                // In a circle about the edge.
                if (i == 1 || i == 2) --neighbour[u];
                if (i >= 2) --neighbour[v];
                around[i] = cellPoints_[index(neighbour)];
            }
            if (std::ranges::find(around, noPoint) != around.end()) continue;
            if (here >= 0) std::swap(around[1], around[3]);
            mesh_.triangles.push_back({around[0], around[1], around[2]});
            mesh_.triangles.push_back({around[0], around[2], around[3]});
        }
    }

    const SurfaceMesh::Grid& grid_;
    const SurfaceMesh::Distance& distance_;
    Cell sizes_;
    std::vector<float> values_;
    std::vector<std::uint32_t> cellPoints_;
    std::vector<Cell> crossed_;
    SurfaceMesh mesh_;
};

}  // namespace

SurfaceMesh SurfaceMesh::extracted(const Grid& grid, const Distance& distance) {
    return Extraction(grid, distance).run();
}

void SurfaceMesh::coarsen(const std::function<float(const Vector3&)>& size) {
    std::map<std::array<std::int32_t, 4>, std::uint32_t> cubes;
    std::vector<std::uint32_t> renumbered;
    std::vector<Vector3> kept;
    std::vector<float> melted;
    for (const Vector3& p : points) {
        auto target = static_cast<std::uint32_t>(kept.size());
        const float side = size(p);
        if (side > 0) {
            const auto at = [&](float v) {
                return static_cast<std::int32_t>(std::floor(v / side));
            };
            target = cubes.try_emplace({at(p.x), at(p.y), at(p.z), at(side * side)}, target)
                         .first->second;
        }
        if (target == kept.size()) {
            kept.emplace_back();
            melted.push_back(0);
        }
        kept[target] = kept[target] + p;
        melted[target] += 1;
        renumbered.push_back(target);
    }
    for (std::size_t i = 0; i < kept.size(); ++i)
        kept[i] = kept[i] * (1 / melted[i]);
    points = std::move(kept);
    for (Triangle& triangle : triangles) {
        for (std::uint32_t& corner : triangle)
            corner = renumbered[corner];
    }
    std::erase_if(triangles,
                  [](const Triangle& t) { return t[0] == t[1] || t[1] == t[2] || t[2] == t[0]; });
}

}  // namespace marrowby
