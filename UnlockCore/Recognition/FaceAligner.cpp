#include "UnlockCore/Recognition/FaceAligner.h"

#include "UnlockCore/Recognition/MeanPoint.h"
#include "UnlockCore/Recognition/SimilarityFit.h"

#include <algorithm>
#include <utility>

namespace marrowby {

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
