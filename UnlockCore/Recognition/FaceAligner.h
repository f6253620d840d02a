// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Foundation/Bitmap.h"
#include "UnlockCore/Foundation/Geometry.h"
#include "UnlockCore/Platform/Imaging.h"
#include "UnlockCore/Recognition/DetectedFace.h"

#include <array>
#include <optional>
#include <span>
#include <string_view>

namespace marrowby {

/// How many reference points an alignment rests on.
enum class AlignmentTier { fivePoint, twoPoint };

[[nodiscard]] std::optional<AlignmentTier> alignmentTier(std::string_view rawValue);
[[nodiscard]] std::string_view rawValue(AlignmentTier tier);

/// A face turned upright, its eyes, nose and mouth corners at fixed positions.
struct AlignedFace {
    /// 112 × 112, rgbx8.
    Bitmap image;
    AlignmentTier tier = AlignmentTier::fivePoint;
    /// The similarity from the picture's pixels to the crop's, both with the origin at the
    /// top-left.
    AffineTransform transform;
};

/// The least-squares similarity (rotation, uniform scale, shift: c = -b, d = a) that maps `source`
/// to `destination`, pair by pair. Nothing where the counts differ or the source points coincide.
[[nodiscard]] std::optional<AffineTransform> fitSimilarity(std::span<const Point> source,
                                                           std::span<const Point> destination);

/// Cuts a detected face out of its picture, upright, as the models expect it. Any thread.
class FaceAligner {
  public:
    static constexpr int side = 112;
    /// Where the eyes, the nose and the mouth corners of a crop lie, in its pixels, the smaller x
    /// first: the positions published with ArcFace (https://arxiv.org/abs/1801.07698).
    static constexpr std::array<Point, 5> reference{
        Point{38.2946, 51.6963}, Point{73.5318, 51.5014}, Point{56.0252, 71.7366},
        Point{41.5493, 92.3655}, Point{70.7299, 92.2041}};

    /// `imaging` outlives the aligner.
    explicit FaceAligner(const Imaging& imaging) : imaging_(&imaging) {}

    /// By five points, else by the two eyes; nothing where neither works.
    [[nodiscard]] std::optional<AlignedFace> align(const DetectedFace& face,
                                                   const Bitmap& image) const;

    /// The pupils, else the middles of the eyes; the smaller x first. Nothing where they coincide.
    [[nodiscard]] static std::optional<std::array<Point, 2>> eyePoints(
        const FaceLandmarks& landmarks);
    /// In the order of `reference`.
    [[nodiscard]] static std::optional<std::array<Point, 5>> fivePoints(
        const FaceLandmarks& landmarks);
    /// The similarity from five or two points to the first of `reference`; nothing for other
    /// counts.
    [[nodiscard]] static std::optional<AffineTransform> estimate(std::span<const Point> points);

  private:
    [[nodiscard]] std::optional<AlignedFace> align(std::span<const Point> points,
                                                   AlignmentTier tier, const Bitmap& image) const;

    const Imaging* imaging_;
};

}  // namespace marrowby
