#include "Platforms/Linux/RectangleFinder.h"

#include "Platforms/Linux/BitmapMat.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <numbers>

#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

namespace marrowby {

namespace {

/// Outlines of the size asked for are found as well in a small picture.
constexpr int workingLongEdge = 320;

using Quad = std::array<cv::Point2f, 4>;

double side(const Quad& quad, std::size_t i) {
    return cv::norm(quad.at((i + 1) % 4) - quad.at(i));
}

bool hasRightAngles(const Quad& quad, double toleranceDegrees) {
    for (std::size_t i = 0; i < 4; ++i) {
        const cv::Point2f a = quad.at((i + 3) % 4) - quad.at(i);
        const cv::Point2f b = quad.at((i + 1) % 4) - quad.at(i);
        const double angle = std::atan2(std::abs(a.cross(b)), a.dot(b)) * 180 / std::numbers::pi;
        if (!(std::abs(angle - 90) <= toleranceDegrees)) return false;
    }
    return true;
}

/// Share of the least seen side on which there is an edge.
double confidence(const Quad& quad, const cv::Mat& nearEdges) {
    double least = 1;
    for (std::size_t i = 0; i < 4; ++i) {
        const cv::Point2f from = quad.at(i);
        const cv::Point2f step = quad.at((i + 1) % 4) - from;
        const int samples = std::max(8, cvRound(side(quad, i)));
        int seen = 0;
        for (int k = 0; k < samples; ++k) {
            const cv::Point p = from + step * ((static_cast<float>(k) + 0.5F) / float(samples));
            const bool inside =
                p.x >= 0 && p.y >= 0 && p.x < nearEdges.cols && p.y < nearEdges.rows;
            if (inside && nearEdges.at<std::uint8_t>(p) != 0) ++seen;
        }
        least = std::min(least, static_cast<double>(seen) / samples);
    }
    return least;
}

/// The outline's four corners, if it has four.
std::optional<Quad> corners(const std::vector<cv::Point>& outline) {
    std::vector<cv::Point> hull;
    cv::convexHull(outline, hull);
    const double length = cv::arcLength(hull, true);
    for (const double tolerance : {0.02, 0.04, 0.06}) {
        std::vector<cv::Point> shape;
        cv::approxPolyDP(hull, shape, tolerance * length, true);
        if (shape.size() != 4) continue;
        Quad quad;
        std::ranges::copy(shape, quad.begin());
        return quad;
    }
    return std::nullopt;
}

}  // namespace

std::optional<std::vector<Rect>> findRectangles(const Bitmap& image,
                                                const RectangleRequest& request) {
    const auto bgr = bgrMat(image);
    if (!bgr) return std::nullopt;
    const double scale =
        std::min(1.0, workingLongEdge / static_cast<double>(std::max(bgr->cols, bgr->rows)));
    cv::Mat small;
    cv::resize(*bgr, small, {}, scale, scale, cv::INTER_AREA);
    cv::cvtColor(small, small, cv::COLOR_BGR2GRAY);
    cv::GaussianBlur(small, small, {3, 3}, 0);

    struct Found {
        Rect box;
        double area;
    };
    std::vector<Found> found;
    const double leastSide = request.minimumSize * std::min(small.cols, small.rows);
    const cv::Rect2d frame(0, 0, bgr->cols, bgr->rows);
    for (const double strength : {30.0, 80.0}) {
        cv::Mat edges;
        cv::Canny(small, edges, strength, strength * 2);
        cv::Mat nearEdges;
        cv::dilate(edges, nearEdges, cv::Mat::ones(3, 3, CV_8U));
        std::vector<std::vector<cv::Point>> outlines;
        cv::findContours(nearEdges, outlines, cv::RETR_LIST, cv::CHAIN_APPROX_SIMPLE);
        for (const auto& outline : outlines) {
            const cv::Rect bounds = cv::boundingRect(outline);
            if (std::max(bounds.width, bounds.height) < leastSide) continue;
            const auto quad = corners(outline);
            if (!quad || !hasRightAngles(*quad, request.quadratureToleranceDegrees)) continue;
            const double across = (side(*quad, 0) + side(*quad, 2)) / 2;
            const double down = (side(*quad, 1) + side(*quad, 3)) / 2;
            const double shorter = std::min(across, down);
            const double aspect = shorter / std::max(across, down);
            if (!(shorter >= leastSide) || aspect < request.minimumAspectRatio ||
                aspect > request.maximumAspectRatio ||
                confidence(*quad, nearEdges) < request.minimumConfidence) {
                continue;
            }
            const cv::Rect2d box = cv::Rect2d(bounds.x / scale, bounds.y / scale,
                                              bounds.width / scale, bounds.height / scale) &
                                   frame;
            const bool isKnown = std::ranges::any_of(found, [&](const Found& other) {
                const Rect both = intersection(other.box, {box.x, box.y, box.width, box.height});
                return both.area() > 0.8 * std::max(other.box.area(), box.area());
            });
            if (!isKnown) found.push_back({{box.x, box.y, box.width, box.height}, box.area()});
        }
    }
    std::ranges::sort(found, std::ranges::greater{}, &Found::area);
    std::vector<Rect> boxes;
    for (const Found& one : found) {
        if (std::ssize(boxes) >= request.maximumObservations) break;
        boxes.push_back(one.box);
    }
    return boxes;
}

}  // namespace marrowby
