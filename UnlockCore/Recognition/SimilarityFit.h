#pragma once

#include "UnlockCore/Foundation/AffineTransform.h"
#include "UnlockCore/Foundation/Geometry.h"

#include <optional>
#include <span>

namespace marrowby {

/// The least-squares similarity (rotation, uniform scale, shift: c = -b, d = a) that maps `source`
/// to `destination`, pair by pair. Nothing where the counts differ or the source points coincide.
[[nodiscard]] std::optional<AffineTransform> fitSimilarity(std::span<const Point> source,
                                                           std::span<const Point> destination);

}  // namespace marrowby
