// SPDX-License-Identifier: Apache-2.0
#include "UnlockCore/Liveness/RGBPixels.h"

#include <gtest/gtest.h>

namespace marrowby {
namespace {

using Alpha = PixelFormat::Alpha;
using Order = PixelFormat::ByteOrder;

std::optional<RGBPixels> view(const PixelFormat& format) {
    const auto image = Bitmap::create(2, 2, 32, format, std::vector<std::uint8_t>(64));
    return RGBPixels::view(image.value());
}

TEST(RGBPixels, findsTheChannelsOfEverySupportedLayout) {
    struct Case {
        PixelFormat format;
        std::array<std::size_t, 3> redGreenBlue;
    };
    const Case cases[] = {
        {{.bitsPerPixel = 24, .alpha = Alpha::none}, {0, 1, 2}},
        {{.alpha = Alpha::skipFirst, .byteOrder = Order::little32}, {2, 1, 0}},
        {{.alpha = Alpha::premultipliedLast, .byteOrder = Order::little32}, {3, 2, 1}},
        {{.alpha = Alpha::first, .byteOrder = Order::big32}, {1, 2, 3}},
        {{.alpha = Alpha::last, .byteOrder = Order::standard}, {0, 1, 2}},
    };
    for (const auto& [format, redGreenBlue] : cases) {
        const auto pixels = view(format);
        ASSERT_TRUE(pixels);
        EXPECT_EQ((std::array{pixels->red, pixels->green, pixels->blue}), redGreenBlue);
        EXPECT_EQ(pixels->bytesPerPixel, format.bitsPerPixel / 8);
    }
}

TEST(RGBPixels, givesNoViewOfAnythingElse) {
    const PixelFormat formats[] = {
        {.bitsPerPixel = 24, .alpha = Alpha::last},
        {.bitsPerPixel = 24, .alpha = Alpha::none, .byteOrder = Order::little32},
        {.alpha = Alpha::none},
        {.byteOrder = Order::little16},
        {.byteOrder = Order::big16},
        {.bitsPerComponent = 16, .bitsPerPixel = 64},
        {.bitsPerPixel = 8, .alpha = Alpha::none, .colorModel = PixelFormat::ColorModel::gray},
        {.colorModel = PixelFormat::ColorModel::other},
    };
    for (const PixelFormat& format : formats) {
        EXPECT_FALSE(view(format)) << &format - &formats[0];
    }
}

}  // namespace
}  // namespace marrowby
