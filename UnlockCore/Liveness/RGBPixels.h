// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Foundation/Bitmap.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace marrowby {

/// A read-only view of a picture with 8 bits per channel, rows top to bottom; it keeps the bytes
/// alive. Any thread.
struct RGBPixels {
    std::int64_t width = 0;
    std::int64_t height = 0;
    std::shared_ptr<const std::vector<std::uint8_t>> data;
    std::size_t bytesPerRow = 0;
    /// 3 or 4.
    std::size_t bytesPerPixel = 0;
    /// Offsets of the channels' bytes within a pixel.
    std::size_t red = 0;
    std::size_t green = 0;
    std::size_t blue = 0;

    /// Nothing for a layout other than 24 bits without alpha, or 32 bits with a fourth byte first
    /// or last.
    [[nodiscard]] static std::optional<RGBPixels> view(const Bitmap& image);
};

}  // namespace marrowby
