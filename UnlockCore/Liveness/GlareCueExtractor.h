// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Liveness/ScreenCues.h"
#include "UnlockCore/Platform/Imaging.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace marrowby {

/// Finds the hard, colourless highlights of a screen's glass.
namespace glarecueextractor {

/// Nothing where the image cannot be drawn.
[[nodiscard]] std::optional<GlareSample> sample(const Bitmap& image, const Imaging& imaging);

/// Of bytes red, green, blue and one that is ignored per pixel, rows without gaps. Nothing for a
/// side of less than 1 or too few bytes.
[[nodiscard]] std::optional<GlareSample> sample(std::span<const std::uint8_t> rgbx, int width,
                                                int height);

}  // namespace glarecueextractor

}  // namespace marrowby
