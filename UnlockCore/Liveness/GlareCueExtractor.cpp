// SPDX-License-Identifier: Apache-2.0
#include "UnlockCore/Liveness/GlareCueExtractor.h"

#include "UnlockCore/Liveness/ScreenCues.h"

#include <algorithm>
#include <array>

namespace marrowby::glarecueextractor {

namespace {

constexpr std::size_t cells = 8;

/// Bright and nearly colourless: BT.601 Y of at least 235, Cb and Cr of at most 10 about 0. In
/// millionths, so that the limits are exact.
bool isHighlight(int red, int green, int blue) {
    constexpr int brightness = 235'000'000;
    constexpr int colour = 10'000'000;
    // No darker green can meet both limits: rejects most pixels early.
    constexpr int leastGreen = 224;
    if (green < leastGreen) return false;
    const int y = 299'000 * red + 587'000 * green + 114'000 * blue;
    const int cb = -168'736 * red - 331'264 * green + 500'000 * blue;
    const int cr = 500'000 * red - 418'688 * green - 81'312 * blue;
    // One branch: separate tests would be mispredicted in a bright picture.
    return static_cast<bool>(static_cast<int>(y >= brightness) & static_cast<int>(cb >= -colour) &
                             static_cast<int>(cb <= colour) & static_cast<int>(cr >= -colour) &
                             static_cast<int>(cr <= colour));
}

}  // namespace

std::optional<GlareSample> sample(const Bitmap& image, const Imaging& imaging) {
    const auto drawn = drawnPixels(image, imaging);
    if (!drawn) return std::nullopt;
    return sample(drawn->bytes(), drawn->width(), drawn->height());
}

std::optional<GlareSample> sample(std::span<const std::uint8_t> rgbx, int width, int height) {
    if (!coversPixels(rgbx, width, height)) return std::nullopt;
    const auto columns = static_cast<std::size_t>(width);
    const auto rows = static_cast<std::size_t>(height);

    // The first column of each cell: the columns x with x · 8 / width equal to its number.
    std::array<std::size_t, cells + 1> edges{};
    for (std::size_t i = 0; i <= cells; ++i)
        edges[i] = (i * columns + cells - 1) / cells;

    std::array<std::size_t, cells * cells> grid{};
    const std::uint8_t* pixel = rgbx.data();
    for (std::size_t y = 0; y < rows; ++y) {
        std::size_t* row = grid.data() + y * cells / rows * cells;
        for (std::size_t cell = 0; cell < cells; ++cell) {
            std::size_t found = 0;
            for (std::size_t x = edges[cell]; x < edges[cell + 1]; ++x, pixel += 4) {
                if (isHighlight(pixel[0], pixel[1], pixel[2])) ++found;
            }
            row[cell] += found;
        }
    }
    std::size_t total = 0;
    for (const std::size_t count : grid)
        total += count;
    const auto fullest = static_cast<double>(std::ranges::max(grid));
    const auto all = static_cast<double>(total);
    return GlareSample{
        .cropPixelWidth = static_cast<double>(width),
        .specularFraction = static_cast<float>(all / static_cast<double>(columns * rows)),
        .specularClusterRatio = total > 0 ? static_cast<float>(fullest / all) : 0};
}

}  // namespace marrowby::glarecueextractor
