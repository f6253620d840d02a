// SPDX-License-Identifier: Apache-2.0
#include "UnlockCore/Liveness/ScreenCues.h"

#include "UnlockCore/Liveness/GlareCueExtractor.h"
#include "UnlockCore/Liveness/MoireCueExtractor.h"

#include <algorithm>
#include <cstddef>
#include <utility>
#include <vector>

namespace marrowby {

namespace {

/// The same pixels, four bytes each, in rows without gaps.
std::optional<Bitmap> withoutGaps(const Bitmap& image) {
    const std::size_t row = static_cast<std::size_t>(image.width()) * 4;
    if (image.bytesPerRow() == row) return image;
    std::vector<std::uint8_t> bytes(row * static_cast<std::size_t>(image.height()));
    for (std::size_t y = 0; y < static_cast<std::size_t>(image.height()); ++y) {
        std::ranges::copy(image.bytes().subspan(y * image.bytesPerRow(), row),
                          bytes.begin() + static_cast<std::ptrdiff_t>(y * row));
    }
    return Bitmap::create(image.width(), image.height(), row, image.format(), std::move(bytes));
}

}  // namespace

std::optional<Bitmap> drawnPixels(const Bitmap& image, const Imaging& imaging) {
    // Over black, colours that are multiplied by their alpha stay as they are.
    const bool isDrawn = image.format() == rgba8 || image.format() == rgbx8;
    const auto drawn = isDrawn ? std::optional(image) : imaging.convert(image, rgbx8);
    return drawn ? withoutGaps(*drawn) : std::nullopt;
}

bool coversPixels(std::span<const std::uint8_t> rgbx, int width, int height) {
    if (width < 1 || height < 1) return false;
    // Both fit in 31 bits: their product cannot overflow 64.
    return rgbx.size() / 4 >= static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
}

ScreenCues ScreenCues::measure(const Bitmap& image, const Imaging& imaging,
                               const FourierTransform& fourier) {
    const auto drawn = drawnPixels(image, imaging);
    if (!drawn) return {};
    return {.glare = glarecueextractor::sample(drawn->bytes(), drawn->width(), drawn->height()),
            .moire = moirecueextractor::sample(drawn->bytes(), drawn->width(), drawn->height(),
                                               fourier)};
}

}  // namespace marrowby
