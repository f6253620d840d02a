// SPDX-License-Identifier: Apache-2.0
#include "Simulation/Scenes/SheetPainter.h"

#include <algorithm>
#include <cmath>

#include <gtest/gtest.h>

namespace marrowby {
namespace {

constexpr int width = 160;
constexpr int height = 120;

SheetView plainView() {
    SheetView view;
    view.camera = PinholeCamera::webcam(width, height);
    view.light.people.ambient = {};
    view.light.people.keyStrength = 0;
    view.light.source = 0;
    return view;
}

Texture white() {
    LinearImage image(32, 32, {1, 1, 1});
    std::ranges::fill(image.coverage, 1.0F);
    return Texture(std::move(image));
}

/// A white screen all over the picture, its pixels as large as so many of the camera's.
LinearImage screen(float pixels, const Point& motion = {}) {
    SheetView view = plainView();
    view.motion = motion;
    Sheet sheet{.width = 4, .height = 4, .gloss = 0, .display = Display{.white = 1}};
    sheet.display->pixelPitch = pixels / static_cast<float>(view.camera.focalLength);
    LinearImage image(width, height);
    paintSheet(image, view, PlacedSheet(sheet, {.position = {.x = 0, .y = 0, .z = 1}}), white());
    return image;
}

/// How much of the green in the middle row comes and goes so many times per pixel.
double wave(const LinearImage& image, double turns) {
    double cosine = 0;
    double sine = 0;
    for (int x = 0; x < width; ++x) {
        const double angle = 2 * 3.14159265358979 * turns * x;
        const auto green = static_cast<double>(image.pixel(x, height / 2)[1]);
        cosine += green * std::cos(angle) / width;
        sine += green * std::sin(angle) / width;
    }
    return 2 * std::hypot(cosine, sine);
}

TEST(SheetPainter, showsMoireWhereAScreensPixelsAreAlmostAsFineAsTheCameras) {
    // 1.9 pixels of the screen in one of the camera's: what is left of the grid looks ten times as
    // coarse.
    const LinearImage coarse = screen(1 / 1.9F);
    EXPECT_GT(wave(coarse, 0.1), 0.01);
    EXPECT_LT(wave(coarse, 0.2375), 0.1 * wave(coarse, 0.1));
    EXPECT_LT(wave(screen(1 / 1.9F, {.x = 1 / 1.9, .y = 0}), 0.1), 0.1 * wave(coarse, 0.1))
        << "moved by a pixel of the screen while the shutter is open";

    // Seven in one, as with a phone: nothing is left.
    const LinearImage fine = screen(1 / 7.1F);
    EXPECT_LT(wave(fine, 0.1), 1e-3);

    // Larger than the camera's: red and blue are seen apart, and nothing gets lost.
    const LinearImage near = screen(6);
    double sum = 0;
    double apart = 0;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const float* pixel = near.pixel(x, y);
            sum += static_cast<double>(pixel[0] + pixel[1] + pixel[2]) / 3;
            apart = std::max(apart, static_cast<double>(pixel[0] - pixel[2]));
        }
    }
    EXPECT_GT(apart, 1);
    EXPECT_NEAR(sum / (width * height), 1, 0.1);
}

}  // namespace
}  // namespace marrowby
