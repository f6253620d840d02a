// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Platform/Imaging.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace marrowby {

/// Tests for every platform's Imaging. A Backend has `makeImaging()`, `makeSource(width, height,
/// bytes)` of BGRX pixels, and the tolerance of a value.
template <typename Backend>
class ImagingContract : public testing::Test {
  protected:
    using Colour = std::array<int, 3>;

    /// Blue 10 × column, green 10 × row, red 200, alpha 0.
    static std::shared_ptr<const SourceImage> ramps() {
        std::vector<std::uint8_t> bytes;
        for (int y = 0; y < 10; ++y) {
            for (int x = 0; x < 20; ++x) {
                for (const int value : {10 * x, 10 * y, 200, 0})
                    bytes.push_back(static_cast<std::uint8_t>(value));
            }
        }
        return Backend::makeSource(20, 10, std::move(bytes));
    }

    static void expectColour(const Bitmap& image, int x, int y, const Colour& expected) {
        const auto* p = &image.bytes()[static_cast<std::size_t>(y) * image.bytesPerRow() +
                                       static_cast<std::size_t>(x) * 4];
        for (std::size_t i = 0; i < expected.size(); ++i) {
            EXPECT_NEAR(p[i], expected.at(i), Backend::tolerance) << x << ", " << y << ": " << i;
        }
    }
};

TYPED_TEST_SUITE_P(ImagingContract);

TYPED_TEST_P(ImagingContract, RendersAPartCountedFromTheBottom) {
    const auto part = TypeParam::makeImaging()->render(*this->ramps(), {3, 1, 5, 2}, 1);
    ASSERT_TRUE(part);
    EXPECT_EQ(part->format(), rgba8);
    ASSERT_EQ(part->width(), 5);
    ASSERT_EQ(part->height(), 2);
    // Rows 7 and 8 from the top.
    this->expectColour(*part, 0, 0, {200, 70, 30});
    this->expectColour(*part, 4, 1, {200, 80, 70});
    EXPECT_EQ(part->bytes()[3], 255);
}

TYPED_TEST_P(ImagingContract, ShrinksByArea) {
    const auto imaging = TypeParam::makeImaging();
    const auto half = imaging->render(*this->ramps(), {0, 0, 20, 10}, 0.5);
    ASSERT_TRUE(half);
    ASSERT_EQ(half->width(), 10);
    ASSERT_EQ(half->height(), 5);
    // Columns 6 and 7, rows 4 and 5.
    this->expectColour(*half, 3, 2, {200, 45, 65});
    // At least one pixel remains.
    EXPECT_EQ(imaging->render(*this->ramps(), {0, 0, 20, 10}, 0.001)->width(), 1);
}

TYPED_TEST_P(ImagingContract, DrawsThroughATransformFromTheBottomLeft) {
    const auto imaging = TypeParam::makeImaging();
    const Bitmap image = *imaging->render(*this->ramps(), {0, 0, 20, 10}, 1);
    // Shifted by whole pixels: two to the right, three up.
    const auto shifted = imaging->draw(image, 20, 10, {.tx = 2, .ty = 3});
    ASSERT_TRUE(shifted);
    EXPECT_EQ(shifted->format(), rgbx8);
    this->expectColour(*shifted, 5, 2, {200, 50, 30});
    this->expectColour(*shifted, 1, 2, {0, 0, 0});
    this->expectColour(*shifted, 5, 8, {0, 0, 0});

    // Rotated by 90° to the left about the origin and moved back into view: (x, y) to (10 - y, x).
    const auto turned = imaging->draw(image, 10, 20, {.a = 0, .b = 1, .c = -1, .d = 0, .tx = 10});
    // From the bottom-left the pixel's centre is (2.5, 16.5), so it shows (16.5, 7.5).
    this->expectColour(*turned, 2, 3, {200, 20, 160});

    const auto nothing = imaging->draw(image, 4, 4, {.a = 0, .d = 0});
    this->expectColour(*nothing, 2, 2, {0, 0, 0});
}

TYPED_TEST_P(ImagingContract, DrawsSmallWithoutSkippingPixels) {
    // One-pixel stripes reduced to a quarter are even grey.
    std::vector<std::uint8_t> bytes(std::size_t{64} * 64 * 4);
    for (std::size_t i = 0; i < bytes.size(); ++i)
        bytes[i] = (i / 4) % 2 == 0 ? 0 : 200;
    const Bitmap stripes = *Bitmap::create(64, 64, std::size_t{64} * 4, rgbx8, std::move(bytes));
    const auto small = TypeParam::makeImaging()->draw(stripes, 16, 16, {.a = 0.25, .d = 0.25});
    ASSERT_TRUE(small);
    for (std::size_t x = 2; x < 14; ++x)
        EXPECT_NEAR(small->bytes()[8 * small->bytesPerRow() + x * 4], 100, 2);
}

TYPED_TEST_P(ImagingContract, ConvertsByteOrders) {
    using Alpha = PixelFormat::Alpha;
    using Order = PixelFormat::ByteOrder;
    const auto imaging = TypeParam::makeImaging();
    struct Case {
        PixelFormat format;
        std::vector<std::uint8_t> bytes;
        std::array<int, 3> bgr;
    };
    for (const Case& c : {
             Case{rgbx8, {1, 2, 3, 9}, {3, 2, 1}},
             Case{rgba8, {1, 2, 3, 9}, {3, 2, 1}},
             Case{bgrx8, {1, 2, 3, 9}, {1, 2, 3}},
             Case{{.alpha = Alpha::skipFirst, .byteOrder = Order::big32}, {9, 1, 2, 3}, {3, 2, 1}},
             Case{
                 {.alpha = Alpha::skipLast, .byteOrder = Order::little32}, {9, 1, 2, 3}, {1, 2, 3}},
             Case{{.alpha = Alpha::last}, {200, 100, 50, 51}, {10, 20, 40}},
             Case{{.bitsPerPixel = 24, .alpha = Alpha::none}, {1, 2, 3}, {3, 2, 1}},
         }) {
        const auto image = Bitmap::create(1, 1, c.bytes.size(), c.format, c.bytes);
        ASSERT_TRUE(image);
        const auto converted = imaging->convert(*image, bgrx8);
        ASSERT_TRUE(converted);
        EXPECT_EQ(converted->format(), bgrx8);
        this->expectColour(*converted, 0, 0, c.bgr);
        const auto back = imaging->convert(*converted, rgba8);
        ASSERT_TRUE(back);
        this->expectColour(*back, 0, 0, {c.bgr[2], c.bgr[1], c.bgr[0]});
    }
}

TYPED_TEST_P(ImagingContract, RefusesWhatCannotBeDrawn) {
    class OtherSource final : public SourceImage {
      public:
        [[nodiscard]] Size extent() const override { return {8, 8}; }
    };
    const auto imaging = TypeParam::makeImaging();
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    const auto source = this->ramps();
    EXPECT_FALSE(imaging->render(OtherSource(), {0, 0, 8, 8}, 1));
    EXPECT_FALSE(imaging->render(*source, {30, 0, 8, 8}, 1));
    EXPECT_FALSE(imaging->render(*source, {0, 0, 8, 8}, nan));
    const Bitmap image = *imaging->render(*source, {0, 0, 20, 10}, 1);
    EXPECT_FALSE(imaging->draw(image, 0, 4, {}));
    EXPECT_FALSE(imaging->draw(image, 1 << 30, 4, {}));
    EXPECT_FALSE(imaging->draw(image, 4, 4, {.a = nan}));
    PixelFormat odd = rgba8;
    odd.colorModel = PixelFormat::ColorModel::other;
    EXPECT_FALSE(
        imaging->convert(*Bitmap::create(1, 1, 4, odd, std::vector<std::uint8_t>(4)), bgrx8));
}

REGISTER_TYPED_TEST_SUITE_P(ImagingContract, RendersAPartCountedFromTheBottom, ShrinksByArea,
                            DrawsThroughATransformFromTheBottomLeft,
                            DrawsSmallWithoutSkippingPixels, ConvertsByteOrders,
                            RefusesWhatCannotBeDrawn);

}  // namespace marrowby
