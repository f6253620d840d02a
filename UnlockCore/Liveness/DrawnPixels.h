#pragma once

#include "UnlockCore/Foundation/Bitmap.h"
#include "UnlockCore/Platform/Imaging.h"

#include <cstdint>
#include <optional>
#include <span>

namespace marrowby {

/// The image as red, green, blue and a byte that is ignored, in rows without gaps. Nothing where it
/// cannot be drawn.
[[nodiscard]] std::optional<Bitmap> drawnPixels(const Bitmap& image, const Imaging& imaging);

/// Whether both sides are at least 1 and there are four bytes for every pixel.
[[nodiscard]] bool coversPixels(std::span<const std::uint8_t> rgbx, int width, int height);

}  // namespace marrowby
