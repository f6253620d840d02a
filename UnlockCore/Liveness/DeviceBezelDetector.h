// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Foundation/Bitmap.h"
#include "UnlockCore/Foundation/Geometry.h"
#include "UnlockCore/Platform/FaceVision.h"

#include <expected>
#include <optional>
#include <string>

namespace marrowby {

/// Looks for a phone- or tablet-shaped rectangle around a face.
namespace devicebezeldetector {

struct Observation {
    /// Pixels, origin at the top-left.
    Rect rectangle;
    /// Share of the face's box inside the rectangle, 0…1; absent for an empty box.
    std::optional<double> faceOverlapFraction;

    friend bool operator==(const Observation&, const Observation&) = default;
};

/// The box of the whole head with its hair and a little of the neck. A device's frame encloses it;
/// curtain rods, shelves and the hairline cut through it, and a line at the chin is the chin.
[[nodiscard]] Rect head(const Rect& faceBox);

/// The largest rectangle. `faceBox` is in pixels with the origin at the top-left. Nothing without a
/// rectangle; the error is the system's own text.
[[nodiscard]] std::expected<std::optional<Observation>, std::string> detect(const Bitmap& image,
                                                                            const Rect& faceBox,
                                                                            FaceVision& vision);

/// Whether the rectangle is narrow enough, compared with the face, to be held up, and shaped as a
/// device or a sheet of paper is; furniture is wider, and what a room's lines form often square.
[[nodiscard]] bool isHeldUp(const Rect& rectangle, const Rect& faceBox, const Size& picture);

/// area(a ∩ b) / area(a); nothing where `a` has no area.
[[nodiscard]] std::optional<double> overlapFraction(const Rect& a, const Rect& b);

}  // namespace devicebezeldetector

}  // namespace marrowby
