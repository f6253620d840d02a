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
        std::size_t bits;
        std::vector<Alpha> alphas;
        std::vector<Order> orders;
        std::array<std::size_t, 3> redGreenBlue;
    };
    const std::vector<Alpha> first{Alpha::premultipliedFirst, Alpha::first, Alpha::skipFirst};
    const std::vector<Alpha> last{Alpha::premultipliedLast, Alpha::last, Alpha::skipLast};
    const std::vector<Order> big{Order::standard, Order::big32};
    const Case cases[] = {
        {24, {Alpha::none}, big, {0, 1, 2}},
        {32, first, {Order::little32}, {2, 1, 0}},
        {32, last, {Order::little32}, {3, 2, 1}},
        {32, first, big, {1, 2, 3}},
        {32, last, big, {0, 1, 2}},
    };
    for (const Case& c : cases) {
        for (const Alpha alpha : c.alphas) {
            for (const Order order : c.orders) {
                const auto pixels =
                    view({.bitsPerPixel = c.bits, .alpha = alpha, .byteOrder = order});
                ASSERT_TRUE(pixels);
                EXPECT_EQ((std::array{pixels->red, pixels->green, pixels->blue}), c.redGreenBlue);
                EXPECT_EQ(pixels->bytesPerPixel, c.bits / 8);
                EXPECT_EQ(pixels->bytesPerRow, 32U);
            }
        }
    }
}

TEST(RGBPixels, givesNoViewOfAnythingElse) {
    const PixelFormat formats[] = {
        {.bitsPerPixel = 24, .alpha = Alpha::last},
        {.bitsPerPixel = 24, .alpha = Alpha::none, .byteOrder = Order::little32},
        {.alpha = Alpha::none},
        {.alpha = Alpha::only},
        {.byteOrder = Order::little16},
        {.byteOrder = Order::big16},
        {.bitsPerComponent = 16, .bitsPerPixel = 64},
        {.bitsPerComponent = 16},
        {.bitsPerPixel = 16},
        {.bitsPerPixel = 8, .alpha = Alpha::none, .colorModel = PixelFormat::ColorModel::gray},
        {.colorModel = PixelFormat::ColorModel::other},
    };
    for (const PixelFormat& format : formats) {
        EXPECT_FALSE(view(format))
            << format.bitsPerComponent << ' ' << format.bitsPerPixel << ' '
            << static_cast<int>(format.alpha) << ' ' << static_cast<int>(format.byteOrder);
    }
}

TEST(RGBPixels, keepsTheBytesAlive) {
    std::optional<RGBPixels> pixels;
    {
        const auto image = Bitmap::create(1, 1, 4, rgba8, {1, 2, 3, 4});
        pixels = RGBPixels::view(image.value());
    }
    ASSERT_TRUE(pixels);
    EXPECT_EQ(*pixels->data, (std::vector<std::uint8_t>{1, 2, 3, 4}));
}

}  // namespace
}  // namespace marrowby
