// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Platforms/Linux/Desktop/BytePool.h"
#include "UnlockCore/Platform/Imaging.h"

namespace marrowby {

/// Draws PixelBuffers and 8-bit bitmaps on the CPU.
class OpenCvImaging final : public Imaging {
  public:
    [[nodiscard]] std::optional<Bitmap> render(const SourceImage& source, const Rect& crop,
                                               double scale) const override;
    [[nodiscard]] std::optional<Bitmap> draw(const Bitmap& image, int width, int height,
                                             const AffineTransform& transform) const override;
    [[nodiscard]] std::optional<Bitmap> convert(const Bitmap& image,
                                                PixelFormat format) const override;

  private:
    /// The working image in use, the newest one, and two crops of a face.
    BytePool pool_{4};
};

}  // namespace marrowby
