// SPDX-License-Identifier: Apache-2.0
#include "UnlockCore/Recognition/FaceAligner.h"

#include "UnlockCore/Foundation/Geometry.h"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace marrowby {

std::optional<AlignmentTier> alignmentTier(std::string_view text) {
    for (const AlignmentTier tier : {AlignmentTier::fivePoint, AlignmentTier::twoPoint}) {
        if (rawValue(tier) == text) return tier;
    }
    return std::nullopt;
}

std::string_view rawValue(AlignmentTier tier) {
    switch (tier) {
        case AlignmentTier::fivePoint:
            return "5-point";
        case AlignmentTier::twoPoint:
            return "2-point";
    }
    return {};
}

std::optional<AffineTransform> fitSimilarity(std::span<const Point> source,
                                             std::span<const Point> destination) {
    const auto p = meanPoint(source);
    const auto q = meanPoint(destination);
    if (!p || !q || source.size() != destination.size()) return std::nullopt;

    double spread = 0;
    double along = 0;
    double across = 0;
    for (std::size_t i = 0; i < source.size(); ++i) {
        const Point d{source[i].x - p->x, source[i].y - p->y};
        const Point u{destination[i].x - q->x, destination[i].y - q->y};
        spread += d.x * d.x + d.y * d.y;
        along += d.x * u.x + d.y * u.y;
        across += d.x * u.y - d.y * u.x;
    }
    if (!(spread > 1e-12)) return std::nullopt;
    const double a = along / spread;
    const double b = across / spread;
    return AffineTransform{.a = a,
                           .b = b,
                           .c = -b,
                           .d = a,
                           .tx = q->x - (a * p->x - b * p->y),
                           .ty = q->y - (b * p->x + a * p->y)};
}

namespace {

std::span<const Point> points(const FaceLandmarks& landmarks, LandmarkRegion region) {
    const auto found = landmarks.regions.find(region);
    if (found == landmarks.regions.end()) return {};
    return found->second;
}

std::optional<Point> eye(const std::optional<Point>& pupil, const FaceLandmarks& landmarks,
                         LandmarkRegion region) {
    return pupil ? pupil : meanPoint(points(landmarks, region));
}

/// y ↦ height - y.
AffineTransform flip(double height) {
    return {.d = -1, .ty = height};
}

}  // namespace

std::optional<std::array<Point, 2>> FaceAligner::eyePoints(const FaceLandmarks& landmarks) {
    const auto left = eye(landmarks.leftPupil, landmarks, LandmarkRegion::leftEye);
    const auto right = eye(landmarks.rightPupil, landmarks, LandmarkRegion::rightEye);
    if (!left || !right || *left == *right) return std::nullopt;
    if (right->x < left->x) return std::array{*right, *left};
    return std::array{*left, *right};
}

std::optional<std::array<Point, 5>> FaceAligner::fivePoints(const FaceLandmarks& landmarks) {
    const auto eyes = eyePoints(landmarks);
    const auto nose = meanPoint(points(landmarks, LandmarkRegion::nose));
    const auto lips = points(landmarks, LandmarkRegion::outerLips);
    if (!eyes || !nose || lips.size() < 2) return std::nullopt;
    const auto smallest = std::ranges::min_element(lips, {}, &Point::x);
    const auto largest = std::ranges::max_element(lips, {}, &Point::x);
    return std::array{(*eyes)[0], (*eyes)[1], *nose, *smallest, *largest};
}

std::optional<AffineTransform> FaceAligner::estimate(std::span<const Point> points) {
    if (points.size() != 5 && points.size() != 2) return std::nullopt;
    return fitSimilarity(points, std::span(reference).first(points.size()));
}

std::optional<AlignedFace> FaceAligner::align(const DetectedFace& face, const Bitmap& image) const {
    if (!face.landmarks) return std::nullopt;
    if (const auto five = fivePoints(*face.landmarks)) {
        if (auto aligned = align(*five, AlignmentTier::fivePoint, image)) return aligned;
    }
    const auto eyes = eyePoints(*face.landmarks);
    return eyes ? align(*eyes, AlignmentTier::twoPoint, image) : std::nullopt;
}

std::optional<AlignedFace> FaceAligner::align(std::span<const Point> points, AlignmentTier tier,
                                              const Bitmap& image) const {
    const auto transform = estimate(points);
    if (!transform) return std::nullopt;
    // The surface's origin is at the bottom-left.
    auto crop =
        imaging_->draw(image, side, side, flip(image.height()).then(*transform).then(flip(side)));
    if (!crop) return std::nullopt;
    return AlignedFace{.image = *std::move(crop), .tier = tier, .transform = *transform};
}

}  // namespace marrowby
