// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Platform/Imaging.h"

#include <memory>

namespace marrowby {

/// Core Image scales camera frames, mostly on the GPU; Core Graphics draws bitmaps. Any thread.
/// Returns nothing on failure or exception.
class CoreImageImaging final : public Imaging {
  public:
    CoreImageImaging();
    ~CoreImageImaging() override;
    CoreImageImaging(const CoreImageImaging&) = delete;
    CoreImageImaging& operator=(const CoreImageImaging&) = delete;

    /// Expects a PixelBufferImage.
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
