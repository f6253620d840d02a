#pragma once

#include "UnlockCore/Platform/Imaging.h"

#include <memory>

namespace marrowby {

/// Core Image scales camera pictures, mostly on the graphics processor; Core Graphics draws
/// bitmaps. Both may be called on any thread at once. What they cannot draw, and any exception, is
/// nothing.
class CoreImageImaging final : public Imaging {
  public:
    CoreImageImaging();
    ~CoreImageImaging() override;
    CoreImageImaging(const CoreImageImaging&) = delete;
    CoreImageImaging& operator=(const CoreImageImaging&) = delete;

    /// Draws a PixelBufferImage.
    [[nodiscard]] std::optional<Bitmap> render(const SourceImage& source, const Rect& crop,
                                               double scale) const override;
    [[nodiscard]] std::optional<Bitmap> draw(const Bitmap& image, int width, int height,
                                             const AffineTransform& transform) const override;
    [[nodiscard]] std::optional<Bitmap> convert(const Bitmap& image,
                                                PixelFormat format) const override;

  private:
    struct Context;
    const std::unique_ptr<const Context> context_;
};

}  // namespace marrowby
