// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Foundation/Bitmap.h"
#include "UnlockCore/Foundation/Geometry.h"

#include <optional>

namespace marrowby {

/// A camera's picture at full resolution, still in the camera's own buffer. Only the same
/// platform's Imaging can draw it. Any thread may read it.
class SourceImage {
  public:
    virtual ~SourceImage() = default;
    /// Pixels.
    [[nodiscard]] virtual Size extent() const = 0;
};

/// Drawing and scaling. Any thread. Nothing is returned where the system cannot draw.
class Imaging {
  public:
    virtual ~Imaging() = default;

    /// The part `crop` of a source (pixels, origin at the bottom-left), scaled by `scale`, as
    /// rgba8.
    [[nodiscard]] virtual std::optional<Bitmap> render(const SourceImage& source, const Rect& crop,
                                                       double scale) const = 0;

    /// A new rgbx8 bitmap, opaque black, with the whole `image` drawn through `transform` at high
    /// interpolation quality. The transform maps image to result, both with the origin at the
    /// bottom-left.
    [[nodiscard]] virtual std::optional<Bitmap> draw(const Bitmap& image, int width, int height,
                                                     const AffineTransform& transform) const = 0;

    /// The image at its own size in another byte order, over opaque black.
    [[nodiscard]] virtual std::optional<Bitmap> convert(const Bitmap& image,
                                                        PixelFormat format) const = 0;
};

/// The pixels of a source that a rendering reads, and the size of its result.
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

/// Whether both sides are 1…16384 pixels.
[[nodiscard]] bool isDrawable(int width, int height);
/// Whether all coefficients are finite.
[[nodiscard]] bool isDrawable(const AffineTransform& transform);

}  // namespace marrowby
