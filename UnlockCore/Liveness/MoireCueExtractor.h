// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Liveness/ScreenCues.h"
#include "UnlockCore/Platform/FourierTransform.h"

#include <cstdint>
#include <optional>
#include <span>

namespace marrowby {

/// Finds moire: the beat between a screen's pixels and the camera's.
namespace moirecueextractor {

/// Of bytes red, green, blue and one that is ignored per pixel, rows without gaps. Nothing for too
/// few bytes, a short side of less than 160 pixels, or without a transform.
[[nodiscard]] std::optional<MoireSample> sample(std::span<const std::uint8_t> rgbx, int width,
                                                int height, const FourierTransform& fourier);

/// The same of a plane of luminances, 0…255, rows without gaps.
[[nodiscard]] std::optional<MoireSample> sample(std::span<const float> luminance, int width,
                                                int height, const FourierTransform& fourier);

/// How far the strongest isolated peak of a power spectrum stands above both its ring and its
/// radial neighbours; 0 without one. Bin (ky, kx) lies at 64 ky + kx, negative frequencies wrapped.
[[nodiscard]] float peakContrast(std::span<const float, FourierTransform::count> power);

}  // namespace moirecueextractor

}  // namespace marrowby
