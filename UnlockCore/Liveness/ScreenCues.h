// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Foundation/Bitmap.h"
#include "UnlockCore/Platform/FourierTransform.h"
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

/// The hard, colourless highlights of one picture of a face.
struct GlareSample {
    /// Pixels.
    double cropPixelWidth = 0;
    /// Share of the pixels that are highlights, 0…1.
    float specularFraction = 0;
    /// Share of the highlights that lie in the fullest cell of an 8 x 8 grid, 0…1; 0 without
    /// highlights.
    float specularClusterRatio = 0;

    friend bool operator==(const GlareSample&, const GlareSample&) = default;
};

/// The fine periodic pattern in one picture of a face.
struct MoireSample {
    /// How far the strongest isolated spectral peak stands above its surroundings, a ratio; 0
    /// without one.
    float peakContrast = 0;
    /// Side of the square that was analysed, pixels.
    std::int64_t patchSize = 0;

    friend bool operator==(const MoireSample&, const MoireSample&) = default;
};

/// The signs of a screen in one picture of a face; absent where they could not be measured.
struct ScreenCues {
    std::optional<GlareSample> glare;
    std::optional<MoireSample> moire;

    /// Draws the image once for both.
    [[nodiscard]] static ScreenCues measure(const Bitmap& image, const Imaging& imaging,
                                            const FourierTransform& fourier);
};

}  // namespace marrowby
