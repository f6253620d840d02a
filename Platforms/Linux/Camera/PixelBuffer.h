// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Platform/Imaging.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace marrowby {

/// A camera frame: 8-bit BGRA (alpha ignored), rows top to bottom, sRGB. Immutable; any thread may
/// read it.
class PixelBuffer final : public SourceImage {
  public:
    /// Takes ownership of the bytes. Null when a side is not positive, a row is shorter than its
    /// pixels or the bytes do not cover all rows.
    [[nodiscard]] static std::shared_ptr<const PixelBuffer> create(int width, int height,
                                                                   std::size_t bytesPerRow,
                                                                   std::vector<std::uint8_t> bytes);
    [[nodiscard]] static std::shared_ptr<const PixelBuffer> create(
        int width, int height, std::size_t bytesPerRow,
        std::shared_ptr<const std::vector<std::uint8_t>> bytes);

    [[nodiscard]] int width() const { return width_; }
    [[nodiscard]] int height() const { return height_; }
    [[nodiscard]] std::size_t bytesPerRow() const { return bytesPerRow_; }
    [[nodiscard]] std::span<const std::uint8_t> bytes() const { return *bytes_; }
    [[nodiscard]] std::shared_ptr<const std::vector<std::uint8_t>> sharedBytes() const {
        return bytes_;
    }

    [[nodiscard]] Size extent() const override {
        return {static_cast<double>(width_), static_cast<double>(height_)};
    }

  private:
    PixelBuffer(int width, int height, std::size_t bytesPerRow,
                std::shared_ptr<const std::vector<std::uint8_t>> bytes);

    int width_;
    int height_;
    std::size_t bytesPerRow_;
    std::shared_ptr<const std::vector<std::uint8_t>> bytes_;
};

}  // namespace marrowby
