#include "UnlockCore/Liveness/DrawnPixels.h"

#include <cstddef>

namespace marrowby {

std::optional<Bitmap> drawnPixels(const Bitmap& image, const Imaging& imaging) {
    // Over black, colours that are multiplied by their alpha stay as they are.
    const bool isDrawn = image.format() == rgba8 || image.format() == rgbx8;
    auto drawn = isDrawn ? std::optional(image) : imaging.convert(image, rgbx8);
    if (!drawn || drawn->bytesPerRow() != static_cast<std::size_t>(drawn->width()) * 4) {
        return std::nullopt;
    }
    return drawn;
}

bool coversPixels(std::span<const std::uint8_t> rgbx, int width, int height) {
    if (width < 1 || height < 1) return false;
    // Both fit in 31 bits: their product cannot overflow 64.
    return rgbx.size() / 4 >= static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
}

}  // namespace marrowby
