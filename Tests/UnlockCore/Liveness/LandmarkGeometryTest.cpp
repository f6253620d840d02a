// SPDX-License-Identifier: Apache-2.0
#include "UnlockCore/Liveness/LandmarkGeometry.h"

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

namespace marrowby {
namespace {

using landmarkgeometry::fit;
using landmarkgeometry::robustFit;

constexpr Homography tilt{1.1, 0.05, 20, -0.03, 0.9, -7, 2e-4, -3e-4, 1};

std::vector<Point> face(int count) {
    std::vector<Point> points;
    for (int i = 0; i < count; ++i)
        points.push_back(
            {200 + 60 * std::cos(i * 2.4) * (1 + i % 3), 150 + 40 * std::sin(i * 1.7)});
    return points;
}

std::vector<Point> moved(std::vector<Point> points) {
    for (Point& point : points)
        point = tilt.apply(point);
    return points;
}

double worst(const Homography& homography, const std::vector<Point>& points) {
    double result = 0;
    for (const Point& point : points)
        result = std::max(result, distance(homography.apply(point), tilt.apply(point)));
    return result;
}

TEST(LandmarkGeometry, ignoresOutliers) {
    const auto points = face(30);
    auto seen = moved(points);
    seen[11].x += 500;
    ASSERT_GT(worst(*fit(points, seen), points), 5);
    EXPECT_LT(worst(*robustFit(points, seen), points), 0.05);
}

TEST(LandmarkGeometry, refusesTooFewOrDegeneratePoints) {
    const auto points = face(12);
    const std::vector<Point> three(points.begin(), points.begin() + 3);
    const std::vector<Point> spot(12, Point{5, 5});
    std::vector<Point> line;
    for (int i = 0; i < 12; ++i)
        line.push_back({10.0 * i, 3.0 * i});
    auto unknown = points;
    unknown[3].y = std::numeric_limits<double>::quiet_NaN();
    for (const auto& bad : {three, spot, line, unknown, std::vector<Point>{}}) {
        EXPECT_FALSE(robustFit(bad, points).has_value() && bad.size() == points.size());
        EXPECT_FALSE(robustFit(bad, bad));
    }
    EXPECT_FALSE(fit(points, three));
}

}  // namespace
}  // namespace marrowby
