// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/Camera/PixelBuffer.h"

#include <utility>

namespace marrowby {

std::shared_ptr<const PixelBuffer> PixelBuffer::create(int width, int height,
                                                       std::size_t bytesPerRow,
                                                       std::vector<std::uint8_t> bytes) {
    return create(width, height, bytesPerRow,
                  std::make_shared<const std::vector<std::uint8_t>>(std::move(bytes)));
}

std::shared_ptr<const PixelBuffer> PixelBuffer::create(
    int width, int height, std::size_t bytesPerRow,
    std::shared_ptr<const std::vector<std::uint8_t>> bytes) {
    if (width <= 0 || height <= 0 || !bytes) return nullptr;
    const std::size_t rowBytes = static_cast<std::size_t>(width) * 4;
    const std::size_t fullRows = static_cast<std::size_t>(height) - 1;
    if (bytesPerRow < rowBytes || bytes->size() < rowBytes) return nullptr;
    if ((bytes->size() - rowBytes) / bytesPerRow < fullRows) return nullptr;
    return std::shared_ptr<const PixelBuffer>(
        new PixelBuffer(width, height, bytesPerRow, std::move(bytes)));
}

PixelBuffer::PixelBuffer(int width, int height, std::size_t bytesPerRow,
                         std::shared_ptr<const std::vector<std::uint8_t>> bytes)
    : width_(width), height_(height), bytesPerRow_(bytesPerRow), bytes_(std::move(bytes)) {}

}  // namespace marrowby
