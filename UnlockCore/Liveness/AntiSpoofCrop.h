// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Foundation/Geometry.h"
#include "UnlockCore/Liveness/RGBPixels.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace marrowby {

/// The part of a picture that the real-face model gets: pixels `left`…`right` by `top`…`bottom`,
/// all inclusive, origin at the top-left.
struct AntiSpoofCrop {
    /// The resampled picture is a square of this many pixels, four bytes each.
    static constexpr int side = 80;
    static constexpr std::size_t bytesPerRow = std::size_t{side} * 4;
    static constexpr std::size_t byteCount = bytesPerRow * side;

    std::int64_t left = 0;
    std::int64_t top = 0;
    std::int64_t right = 0;
    std::int64_t bottom = 0;

    /// The face's box enlarged `scale` times about its centre, or as far as the picture allows, and
    /// shifted (never cut) into the picture. Nothing for an empty, non-finite or absurdly large box
    /// or a picture of less than 2 x 2 pixels.
    [[nodiscard]] static std::optional<AntiSpoofCrop> around(const Rect& faceBox,
                                                             std::int64_t imageWidth,
                                                             std::int64_t imageHeight,
                                                             double scale);

    /// `byteCount` bytes, blue, green, red and 255 per pixel, bilinear with pixel centres aligned.
    /// Empty when the crop does not lie within the picture.
    [[nodiscard]] std::vector<std::uint8_t> resampled(const RGBPixels& pixels) const;

    friend bool operator==(const AntiSpoofCrop&, const AntiSpoofCrop&) = default;
};

}  // namespace marrowby
