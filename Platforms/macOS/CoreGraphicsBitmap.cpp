// SPDX-License-Identifier: Apache-2.0
#include "Platforms/macOS/CoreGraphicsBitmap.h"

#include <cstddef>
#include <memory>
#include <vector>

namespace marrowby {

namespace {

using Alpha = PixelFormat::Alpha;
using Order = PixelFormat::ByteOrder;
using Bytes = std::shared_ptr<const std::vector<std::uint8_t>>;

constexpr std::uint32_t orderShift = 12;

constexpr std::uint32_t value(Alpha alpha) {
    return static_cast<std::uint32_t>(alpha);
}
constexpr std::uint32_t value(Order order) {
    return static_cast<std::uint32_t>(order) << orderShift;
}

// The enumerators follow CGImageAlphaInfo's order.
static_assert(value(Alpha::none) == kCGImageAlphaNone);
static_assert(value(Alpha::premultipliedLast) == kCGImageAlphaPremultipliedLast);
static_assert(value(Alpha::premultipliedFirst) == kCGImageAlphaPremultipliedFirst);
static_assert(value(Alpha::last) == kCGImageAlphaLast);
static_assert(value(Alpha::first) == kCGImageAlphaFirst);
static_assert(value(Alpha::skipLast) == kCGImageAlphaNoneSkipLast);
static_assert(value(Alpha::skipFirst) == kCGImageAlphaNoneSkipFirst);
static_assert(value(Alpha::only) == kCGImageAlphaOnly);
static_assert(value(Order::standard) == kCGBitmapByteOrderDefault);
static_assert(value(Order::little16) == kCGBitmapByteOrder16Little);
static_assert(value(Order::little32) == kCGBitmapByteOrder32Little);
static_assert(value(Order::big16) == kCGBitmapByteOrder16Big);
static_assert(value(Order::big32) == kCGBitmapByteOrder32Big);

bool isRGB(CGImageRef image) {
    CGColorSpaceRef space = CGImageGetColorSpace(image);
    return space && CGColorSpaceGetModel(space) == kCGColorSpaceModelRGB;
}

}  // namespace

CoreFoundationOwner<CGColorSpaceRef> sRGBColorSpace() {
    return CoreFoundationOwner<CGColorSpaceRef>(CGColorSpaceCreateWithName(kCGColorSpaceSRGB));
}

CGBitmapInfo bitmapInfo(const PixelFormat& format) {
    return static_cast<CGBitmapInfo>(value(format.alpha) | value(format.byteOrder));
}

CoreFoundationOwner<CGImageRef> coreGraphicsImage(const Bitmap& bitmap) {
    const PixelFormat& format = bitmap.format();
    if (format.colorModel != PixelFormat::ColorModel::rgb) return nullptr;
    // Retains the bytes: the image may outlive the bitmap.
    auto holder = std::make_unique<Bytes>(bitmap.sharedBytes());
    const CoreFoundationOwner<CGDataProviderRef> provider(
        CGDataProviderCreateWithData(holder.get(), bitmap.bytes().data(), bitmap.bytes().size(),
                                     [](void* held, const void* /*bytes*/, std::size_t /*size*/) {
                                         delete static_cast<Bytes*>(held);
                                     }));
    if (!provider) return nullptr;
    (void)holder.release();
    return CoreFoundationOwner<CGImageRef>(CGImageCreate(
        static_cast<std::size_t>(bitmap.width()), static_cast<std::size_t>(bitmap.height()),
        format.bitsPerComponent, format.bitsPerPixel, bitmap.bytesPerRow(), sRGBColorSpace().get(),
        bitmapInfo(format), provider.get(), nullptr, true, kCGRenderingIntentDefault));
}

std::optional<Bitmap> bitmap(CGImageRef image) {
    if (!image || !isRGB(image)) return std::nullopt;
    const CoreFoundationOwner<CFDataRef> data(
        CGDataProviderCopyData(CGImageGetDataProvider(image)));
    if (!data) return std::nullopt;
    const std::uint32_t info = CGImageGetBitmapInfo(image);
    PixelFormat format{
        .bitsPerComponent = CGImageGetBitsPerComponent(image),
        .bitsPerPixel = CGImageGetBitsPerPixel(image),
        .alpha = static_cast<Alpha>(CGImageGetAlphaInfo(image)),
        .byteOrder = static_cast<Order>((info & kCGBitmapByteOrderMask) >> orderShift)};
    if (info & kCGBitmapFloatComponents) return std::nullopt;
    // For 8-bit components big-endian and default order are the same.
    if (format.byteOrder == Order::big32) format.byteOrder = Order::standard;
    const std::uint8_t* first = CFDataGetBytePtr(data.get());
    return Bitmap::create(static_cast<int>(CGImageGetWidth(image)),
                          static_cast<int>(CGImageGetHeight(image)), CGImageGetBytesPerRow(image),
                          format, std::vector(first, first + CFDataGetLength(data.get())));
}

}  // namespace marrowby
