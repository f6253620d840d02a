// SPDX-License-Identifier: Apache-2.0
#include "UnlockCore/Liveness/AntiSpoofCrop.h"

#include <array>
#include <functional>
#include <limits>

#include <gtest/gtest.h>

namespace marrowby {
namespace {

using Crop = AntiSpoofCrop;

TEST(AntiSpoofCrop, enlargesLimitsAndShiftsTheBox) {
    struct Case {
        const char* what;
        Rect face;
        double scale;
        Crop expected;
    };
    const Case cases[] = {
        {"inside", {300, 200, 40, 60}, 2.0, {280, 170, 360, 290}},
        {"truncated toward zero", {300.5, 200.25, 41, 61}, 2.7, {265, 148, 376, 313}},
        {"top-left corner", {0, 0, 100, 80}, 2.7, {0, 0, 270, 216}},
        {"bottom-right corner", {540, 400, 100, 80}, 2.7, {369, 263, 639, 479}},
        {"left of the picture", {-90, 200, 100, 80}, 2.0, {0, 160, 200, 320}},
        {"wholly outside", {5000, -5000, 100, 80}, 2.0, {439, 0, 639, 160}},
        {"height limits", {250, 100, 100, 300}, 2.7, {220, 0, 379, 479}},
        {"width limits", {100, 200, 400, 60}, 4.0, {0, 182, 639, 277}},
        {"larger than the picture", {-100, -100, 1280, 960}, 2.7, {0, 0, 639, 479}},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(Crop::around(c.face, 640, 480, c.scale), c.expected) << c.what;
    }
}

TEST(AntiSpoofCrop, refusesBoxesAndPicturesThatHoldNoFace) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double infinity = std::numeric_limits<double>::infinity();
    for (const double bad : {nan, infinity, -infinity, 1e300, 1e19}) {
        for (const Rect& face : {Rect{bad, 0, 10, 10}, Rect{0, bad, 10, 10}, Rect{0, 0, bad, 10},
                                 Rect{0, 0, 10, bad}}) {
            EXPECT_FALSE(Crop::around(face, 640, 480, 2.7)) << bad;
        }
    }
    const Rect face{10, 10, 40, 40};
    EXPECT_FALSE(Crop::around({10, 10, 0, 40}, 640, 480, 2.7));
    EXPECT_FALSE(Crop::around({10, 10, 40, -1}, 640, 480, 2.7));
    EXPECT_FALSE(Crop::around({10.4, 10.4, 0.1, 0.1}, 640, 480, 2.7)) << "within one pixel";
    EXPECT_FALSE(Crop::around(face, 640, 1, 2.7));
    EXPECT_EQ(Crop::around(face, 2, 2, 2.7), (Crop{0, 0, 1, 1}));
}

/// A picture whose channels are functions of the place.
RGBPixels picture(int width, int height, const PixelFormat& format,
                  const std::function<std::array<int, 3>(int x, int y)>& redGreenBlue) {
    const std::size_t bytesPerRow = static_cast<std::size_t>(width) * 4 + 12;
    const auto empty = Bitmap::create(
        width, height, bytesPerRow, format,
        std::vector<std::uint8_t>(bytesPerRow * static_cast<std::size_t>(height), 77));
    const RGBPixels layout = RGBPixels::view(empty.value()).value();
    std::vector<std::uint8_t> bytes(layout.data->begin(), layout.data->end());
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            std::uint8_t* pixel = &bytes.at(static_cast<std::size_t>(y) * bytesPerRow +
                                            static_cast<std::size_t>(x) * 4);
            const auto [red, green, blue] = redGreenBlue(x, y);
            pixel[layout.red] = static_cast<std::uint8_t>(red);
            pixel[layout.green] = static_cast<std::uint8_t>(green);
            pixel[layout.blue] = static_cast<std::uint8_t>(blue);
        }
    }
    return RGBPixels::view(
               Bitmap::create(width, height, bytesPerRow, format, std::move(bytes)).value())
        .value();
}

std::array<int, 4> pixel(const std::vector<std::uint8_t>& bytes, std::size_t column,
                         std::size_t row) {
    const std::size_t at = row * Crop::bytesPerRow + column * 4;
    return {bytes.at(at), bytes.at(at + 1), bytes.at(at + 2), bytes.at(at + 3)};
}

TEST(AntiSpoofCrop, halvesByTheMeanOfFourPixels) {
    const auto pixels = picture(170, 170, bgrx8, [](int x, int y) {
        return std::array{x, y, (x % 2 == 0 && y % 2 == 0) ? 255 : 0};
    });
    const auto bytes = Crop{0, 0, 159, 159}.resampled(pixels);
    // Blue: 255 / 4 = 63.75. Green and red: 2 i + 0.5, rounded up.
    EXPECT_EQ(pixel(bytes, 0, 0), (std::array{64, 1, 1, 255}));
    EXPECT_EQ(pixel(bytes, 40, 7), (std::array{64, 15, 81, 255}));
    EXPECT_EQ(pixel(bytes, 79, 79), (std::array{64, 159, 159, 255}));
}

TEST(AntiSpoofCrop, enlargesBetweenPixelCentresAndHoldsTheEdges) {
    // Columns of 0 and 100, rows of 20 and 220; their neighbours outside the crop must not leak in.
    const auto pixels = picture(6, 6, rgba8, [](int x, int y) {
        const bool inside = x >= 2 && x <= 3 && y >= 2 && y <= 3;
        return inside ? std::array{(x - 2) * 100, 20 + (y - 2) * 200, 255}
                      : std::array{250, 250, 0};
    });
    const auto bytes = Crop{2, 2, 3, 3}.resampled(pixels);
    struct Case {
        std::size_t place;
        int red;
        int green;
    };
    // The source position is (2 / 80)(i + 0.5) - 0.5: below 0 up to 19, 0.4875 at 39, 0.9875 at 59.
    for (const Case& c : {Case{0, 0, 20}, Case{19, 0, 20}, Case{20, 1, 23}, Case{39, 49, 118},
                          Case{59, 99, 218}, Case{60, 100, 220}, Case{79, 100, 220}}) {
        EXPECT_EQ(pixel(bytes, c.place, 79 - c.place).at(2), c.red) << c.place;
        EXPECT_EQ(pixel(bytes, 79 - c.place, c.place).at(1), c.green) << c.place;
        EXPECT_EQ(pixel(bytes, c.place, c.place).at(0), 255) << c.place;
    }
}

TEST(AntiSpoofCrop, readsNothingOutsideThePicture) {
    const auto pixels = picture(10, 8, rgba8, [](int, int) { return std::array{1, 2, 3}; });
    EXPECT_EQ((Crop{0, 0, 9, 7}).resampled(pixels).size(), Crop::byteCount);
    for (const Crop& crop : {Crop{-1, 0, 5, 5}, Crop{0, -1, 5, 5}, Crop{0, 0, 10, 7},
                             Crop{0, 0, 9, 8}, Crop{5, 0, 4, 7}, Crop{0, 5, 9, 4}}) {
        EXPECT_TRUE(crop.resampled(pixels).empty());
    }
}

}  // namespace
}  // namespace marrowby
