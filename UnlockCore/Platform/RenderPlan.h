#pragma once

#include "UnlockCore/Foundation/AffineTransform.h"
#include "UnlockCore/Foundation/Geometry.h"

#include <optional>

namespace marrowby {

/// Which pixels of a source a rendering takes, and how large it is.
struct RenderPlan {
    /// Whole pixels inside the source, at least one; origin at the bottom-left.
    Rect part;
    /// Pixels.
    int width = 0;
    int height = 0;

    /// The part `crop` of a source of the size `extent`, scaled by `scale`, all rounded to whole
    /// pixels. Nothing where they do not meet or the result would be unreasonably large.
    [[nodiscard]] static std::optional<RenderPlan> make(const Size& extent, const Rect& crop,
                                                        double scale);

    friend bool operator==(const RenderPlan&, const RenderPlan&) = default;
};

/// Whether a picture of this size is one that may be asked for.
[[nodiscard]] bool isDrawable(int width, int height);
/// Whether all of it are finite numbers.
[[nodiscard]] bool isDrawable(const AffineTransform& transform);

}  // namespace marrowby
