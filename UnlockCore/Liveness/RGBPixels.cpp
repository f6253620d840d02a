// SPDX-License-Identifier: Apache-2.0
#include "UnlockCore/Liveness/RGBPixels.h"

namespace marrowby {

namespace {

struct Layout {
    std::size_t bytesPerPixel;
    std::size_t red;
    std::size_t green;
    std::size_t blue;
};

enum class FourthByte { none, first, last, unsupported };

FourthByte fourthByte(PixelFormat::Alpha alpha) {
    switch (alpha) {
        case PixelFormat::Alpha::none:
            return FourthByte::none;
        case PixelFormat::Alpha::premultipliedFirst:
        case PixelFormat::Alpha::first:
        case PixelFormat::Alpha::skipFirst:
            return FourthByte::first;
        case PixelFormat::Alpha::premultipliedLast:
        case PixelFormat::Alpha::last:
        case PixelFormat::Alpha::skipLast:
            return FourthByte::last;
        case PixelFormat::Alpha::only:
            return FourthByte::unsupported;
    }
    return FourthByte::unsupported;
}

std::optional<Layout> layout(const PixelFormat& format) {
    if (format.bitsPerComponent != 8 || format.colorModel != PixelFormat::ColorModel::rgb) {
        return std::nullopt;
    }
    const bool bigEndian = format.byteOrder == PixelFormat::ByteOrder::standard ||
                           format.byteOrder == PixelFormat::ByteOrder::big32;
    const bool littleEndian = format.byteOrder == PixelFormat::ByteOrder::little32;
    const FourthByte fourth = fourthByte(format.alpha);

    if (format.bitsPerPixel == 24 && fourth == FourthByte::none && bigEndian) {
        return Layout{3, 0, 1, 2};
    }
    if (format.bitsPerPixel != 32) return std::nullopt;
    if (fourth == FourthByte::first) {
        if (littleEndian) return Layout{4, 2, 1, 0};
        if (bigEndian) return Layout{4, 1, 2, 3};
    }
    if (fourth == FourthByte::last) {
        if (littleEndian) return Layout{4, 3, 2, 1};
        if (bigEndian) return Layout{4, 0, 1, 2};
    }
    return std::nullopt;
}

}  // namespace

std::optional<RGBPixels> RGBPixels::view(const Bitmap& image) {
    const auto found = layout(image.format());
    if (!found) return std::nullopt;
    return RGBPixels{.width = image.width(),
                     .height = image.height(),
                     .data = image.sharedBytes(),
                     .bytesPerRow = image.bytesPerRow(),
                     .bytesPerPixel = found->bytesPerPixel,
                     .red = found->red,
                     .green = found->green,
                     .blue = found->blue};
}

}  // namespace marrowby
