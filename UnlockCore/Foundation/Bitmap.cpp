// SPDX-License-Identifier: Apache-2.0
#include "UnlockCore/Foundation/Bitmap.h"

#include <utility>

namespace marrowby {

std::optional<Bitmap> Bitmap::create(int width, int height, std::size_t bytesPerRow,
                                     PixelFormat format, std::vector<std::uint8_t> bytes) {
    return create(width, height, bytesPerRow, format,
                  std::make_shared<const std::vector<std::uint8_t>>(std::move(bytes)));
}

std::optional<Bitmap> Bitmap::create(int width, int height, std::size_t bytesPerRow,
                                     PixelFormat format,
                                     std::shared_ptr<const std::vector<std::uint8_t>> bytes) {
    if (width < 1 || height < 1 || !bytes) return std::nullopt;
    const std::size_t pixelBytes = static_cast<std::size_t>(width) * (format.bitsPerPixel / 8);
    const auto rows = static_cast<std::size_t>(height);
    if (bytesPerRow < pixelBytes || bytes->size() / rows < bytesPerRow) return std::nullopt;

    Bitmap bitmap;
    bitmap.width_ = width;
    bitmap.height_ = height;
    bitmap.bytesPerRow_ = bytesPerRow;
    bitmap.format_ = format;
    bitmap.bytes_ = std::move(bytes);
    return bitmap;
}

}  // namespace marrowby
