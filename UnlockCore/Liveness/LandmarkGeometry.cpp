// SPDX-License-Identifier: Apache-2.0
#include "UnlockCore/Liveness/LandmarkGeometry.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <compare>
#include <cstddef>
#include <numbers>
#include <utility>

namespace marrowby {

Point Homography::apply(const Point& point) const {
    const double w = h31 * point.x + h32 * point.y + h33;
    if (!(std::abs(w) > 1e-12)) return point;
    return {(h11 * point.x + h12 * point.y + h13) / w, (h21 * point.x + h22 * point.y + h23) / w};
}

}  // namespace marrowby

namespace marrowby::landmarkgeometry {

namespace {

constexpr std::size_t unknowns = 8;
constexpr double smallestPivot = 1e-12;

/// Tukey's constant times the factor from a median absolute residual to a standard deviation.
constexpr double tukeyReach = 4.685 * 1.4826;
constexpr double smallestDeviation = 1e-4;
constexpr std::ptrdiff_t fewestInliers = 6;
constexpr int reweightings = 2;

/// Moves the centroid to the origin and the mean distance from it to √2.
struct Normalisation {
    Point centroid;
    double scale = 1;

    [[nodiscard]] Point apply(const Point& point) const {
        return {scale * (point.x - centroid.x), scale * (point.y - centroid.y)};
    }
};

std::optional<Normalisation> normalisation(std::span<const Point> points) {
    if (points.empty()) return std::nullopt;
    const auto count = static_cast<double>(points.size());
    Point centroid;
    for (const Point& point : points) {
        centroid.x += point.x / count;
        centroid.y += point.y / count;
    }
    double spread = 0;
    for (const Point& point : points)
        spread += distance(point, centroid) / count;
    if (!(spread > 1e-8)) return std::nullopt;
    return Normalisation{centroid, std::numbers::sqrt2 / spread};
}

/// The normal equations of the eight unknowns: `unknowns` rows of coefficients and right-hand side.
/// Only what lies on and right of the diagonal is added up.
struct Equations {
    std::array<std::array<double, unknowns + 1>, unknowns> rows{};

    void add(const std::array<double, unknowns + 1>& row, double weight) {
        for (std::size_t i = 0; i < unknowns; ++i) {
            const double factor = weight * row[i];
            for (std::size_t j = i; j <= unknowns; ++j)
                rows[i][j] += factor * row[j];
        }
    }

    /// Gaussian elimination with partial pivoting.
    std::optional<std::array<double, unknowns>> solve() && {
        for (std::size_t i = 0; i < unknowns; ++i) {
            for (std::size_t j = 0; j < i; ++j)
                rows[i][j] = rows[j][i];
        }
        for (std::size_t column = 0; column < unknowns; ++column) {
            std::size_t pivot = column;
            for (std::size_t i = column + 1; i < unknowns; ++i) {
                if (std::abs(rows[i][column]) > std::abs(rows[pivot][column])) pivot = i;
            }
            if (!(std::abs(rows[pivot][column]) > smallestPivot)) return std::nullopt;
            std::swap(rows[pivot], rows[column]);
            for (std::size_t i = column + 1; i < unknowns; ++i) {
                const double factor = rows[i][column] / rows[column][column];
                for (std::size_t j = column; j <= unknowns; ++j)
                    rows[i][j] -= factor * rows[column][j];
            }
        }
        std::array<double, unknowns> solution{};
        for (std::size_t i = unknowns; i-- > 0;) {
            double value = rows[i][unknowns];
            for (std::size_t j = i + 1; j < unknowns; ++j)
                value -= rows[i][j] * solution[j];
            solution[i] = value / rows[i][i];
        }
        return solution;
    }
};

using Matrix = std::array<std::array<double, 3>, 3>;

Matrix product(const Matrix& a, const Matrix& b) {
    Matrix result{};
    for (std::size_t i = 0; i < 3; ++i) {
        for (std::size_t j = 0; j < 3; ++j) {
            for (std::size_t k = 0; k < 3; ++k)
                result[i][j] += a[i][k] * b[k][j];
        }
    }
    return result;
}

Matrix matrix(const Normalisation& n) {
    return {
        {{n.scale, 0, -n.scale * n.centroid.x}, {0, n.scale, -n.scale * n.centroid.y}, {0, 0, 1}}};
}

Matrix inverse(const Normalisation& n) {
    return {{{1 / n.scale, 0, n.centroid.x}, {0, 1 / n.scale, n.centroid.y}, {0, 0, 1}}};
}

}  // namespace

double median(std::vector<double> values) {
    if (values.empty()) return 0;
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    // A total order even with NaN.
    const auto isLess = [](double a, double b) { return std::is_lt(std::strong_order(a, b)); };
    std::ranges::nth_element(values, middle, isLess);
    if (values.size() % 2 != 0) return *middle;
    return (*std::max_element(values.begin(), middle, isLess) + *middle) / 2;
}

std::optional<Homography> fit(std::span<const Point> source, std::span<const Point> destination,
                              std::span<const double> weights) {
    if (source.size() < 4 || source.size() != destination.size() ||
        (!weights.empty() && weights.size() != source.size())) {
        return std::nullopt;
    }
    const auto from = normalisation(source);
    const auto to = normalisation(destination);
    if (!from || !to) return std::nullopt;

    Equations equations;
    for (std::size_t i = 0; i < source.size(); ++i) {
        const auto [x, y] = from->apply(source[i]);
        const auto [u, v] = to->apply(destination[i]);
        const double weight = weights.empty() ? 1 : weights[i];
        equations.add({x, y, 1, 0, 0, 0, -u * x, -u * y, u}, weight);
        equations.add({0, 0, 0, x, y, 1, -v * x, -v * y, v}, weight);
    }
    const auto h = std::move(equations).solve();
    if (!h) return std::nullopt;
    const Matrix normalised{
        {{(*h)[0], (*h)[1], (*h)[2]}, {(*h)[3], (*h)[4], (*h)[5]}, {(*h)[6], (*h)[7], 1}}};
    const Matrix m = product(product(inverse(*to), normalised), matrix(*from));
    return Homography{m[0][0], m[0][1], m[0][2], m[1][0], m[1][1],
                      m[1][2], m[2][0], m[2][1], m[2][2]};
}

std::optional<Homography> robustFit(std::span<const Point> source,
                                    std::span<const Point> destination) {
    auto best = fit(source, destination);
    if (!best) return std::nullopt;
    for (int round = 0; round < reweightings; ++round) {
        std::vector<double> weights = residuals(*best, source, destination);
        const double deviation = std::max(median(weights), smallestDeviation);
        for (double& weight : weights) {
            const double u = weight / (deviation * tukeyReach);
            weight = u < 1 ? (1 - u * u) * (1 - u * u) : 0;
        }
        if (std::ranges::count_if(weights, [](double w) { return w > 0; }) < fewestInliers) {
            std::ranges::fill(weights, 1.0);
        }
        if (const auto refined = fit(source, destination, weights)) best = refined;
    }
    return best;
}

std::vector<double> residuals(const Homography& homography, std::span<const Point> source,
                              std::span<const Point> destination) {
    std::vector<double> result(std::min(source.size(), destination.size()));
    for (std::size_t i = 0; i < result.size(); ++i)
        result[i] = distance(homography.apply(source[i]), destination[i]);
    return result;
}

}  // namespace marrowby::landmarkgeometry
