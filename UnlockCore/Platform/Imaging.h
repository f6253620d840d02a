#pragma once

#include "UnlockCore/Foundation/AffineTransform.h"
#include "UnlockCore/Foundation/Bitmap.h"
#include "UnlockCore/Foundation/Geometry.h"
#include "UnlockCore/Platform/SourceImage.h"

#include <optional>

namespace marrowby {

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

}  // namespace marrowby
