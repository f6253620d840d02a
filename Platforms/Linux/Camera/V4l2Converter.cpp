// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/Camera/V4l2Converter.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <string_view>
#include <utility>

#include <libyuv/convert_argb.h>
#include <turbojpeg.h>

namespace marrowby {

namespace {

constexpr int longestSide = 16384;
/// Buffers in use at once: the newest frame, the one being processed, the one being filled, and one
/// between them.
constexpr std::size_t spareBuffers = 4;

bool covers(std::span<const std::uint8_t> bytes, int rows, int bytesPerRow, int lastRow) {
    return bytes.size() >=
           static_cast<std::size_t>(rows - 1) * static_cast<std::size_t>(bytesPerRow) +
               static_cast<std::size_t>(lastRow);
}

/// Many webcams leave a few extra bytes before a marker, which damages no pixel; a frame with a
/// missing middle reports many.
bool isHarmless(std::string_view warning) {
    constexpr std::string_view before = "Corrupt JPEG data: ";
    constexpr std::string_view after = " extraneous bytes before marker";
    constexpr int few = 16;
    const auto start = warning.find(before);
    if (start == std::string_view::npos) return false;
    warning.remove_prefix(start + before.size());
    int count = 0;
    const auto [end, fault] =
        std::from_chars(warning.data(), warning.data() + warning.size(), count);
    warning.remove_prefix(static_cast<std::size_t>(end - warning.data()));
    return fault == std::errc() && count <= few && warning.starts_with(after);
}

}  // namespace

void V4l2Converter::CloseDecoder::operator()(void* decoder) const {
    tjDestroy(decoder);
}

V4l2Converter::V4l2Converter() : pool_(spareBuffers) {}

bool V4l2Converter::canRead(const V4l2Layout& layout) {
    const auto& [pixelFormat, width, height, bytesPerRow] = layout;
    if (width <= 0 || height <= 0 || width > longestSide || height > longestSide) return false;
    if (pixelFormat == V4L2_PIX_FMT_MJPEG) return true;
    // 4:2:2 and 4:2:0 share chroma between two columns (and two rows).
    if (pixelFormat == V4L2_PIX_FMT_YUYV) return width % 2 == 0 && bytesPerRow >= 2 * width;
    return pixelFormat == V4L2_PIX_FMT_NV12 && width % 2 == 0 && height % 2 == 0 &&
           bytesPerRow >= width;
}

std::shared_ptr<const PixelBuffer> V4l2Converter::convert(const V4l2Layout& layout,
                                                          std::span<const std::uint8_t> bytes) {
    if (!canRead(layout)) return nullptr;
    const auto& [pixelFormat, width, height, bytesPerRow] = layout;
    const int pixelRow = width * 4;
    auto pixels = pool_.take(static_cast<std::size_t>(pixelRow) * static_cast<std::size_t>(height));
    bool isWhole = false;
    if (pixelFormat == V4L2_PIX_FMT_MJPEG) {
        isWhole = decode(layout, bytes, pixels->data());
    } else if (pixelFormat == V4L2_PIX_FMT_YUYV) {
        isWhole = covers(bytes, height, bytesPerRow, 2 * width) &&
                  libyuv::YUY2ToARGB(bytes.data(), bytesPerRow, pixels->data(), pixelRow, width,
                                     height) == 0;
    } else if (covers(bytes, height + height / 2, bytesPerRow, width)) {
        const std::uint8_t* colours =
            bytes.data() + static_cast<std::size_t>(bytesPerRow) * static_cast<std::size_t>(height);
        isWhole = libyuv::NV12ToARGB(bytes.data(), bytesPerRow, colours, bytesPerRow,
                                     pixels->data(), pixelRow, width, height) == 0;
    }
    if (!isWhole) return nullptr;
    return PixelBuffer::create(width, height, static_cast<std::size_t>(pixelRow),
                               std::move(pixels));
}

bool V4l2Converter::decode(const V4l2Layout& layout, std::span<const std::uint8_t> bytes,
                           std::uint8_t* pixels) {
    if (!decoder_) decoder_.reset(tjInitDecompress());
    int width = 0;
    int height = 0;
    int sampling = 0;
    int colours = 0;
    if (!decoder_ || bytes.empty() ||
        tjDecompressHeader3(decoder_.get(), bytes.data(), bytes.size(), &width, &height, &sampling,
                            &colours) != 0 ||
        width != layout.width || height != layout.height) {
        return false;
    }
    return tjDecompress2(decoder_.get(), bytes.data(), bytes.size(), pixels, width, 4 * width,
                         height, TJPF_BGRA, 0) == 0 ||
           (tjGetErrorCode(decoder_.get()) == TJERR_WARNING &&
            isHarmless(tjGetErrorStr2(decoder_.get())));
}

}  // namespace marrowby
