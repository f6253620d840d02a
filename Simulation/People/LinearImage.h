// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Simulation/People/Vector3.h"

#include <cstddef>
#include <vector>

namespace marrowby {

/// A picture in linear light with the primaries of sRGB, rows top to bottom. 1 is full scale; light
/// may go beyond.
struct LinearImage {
    /// One colour, no coverage.
    LinearImage(int imageWidth, int imageHeight, const Vector3& colour = {});

    [[nodiscard]] std::size_t index(int x, int y) const {
        return static_cast<std::size_t>(y) * static_cast<std::size_t>(width) +
               static_cast<std::size_t>(x);
    }
    [[nodiscard]] float* pixel(int x, int y) { return &rgb[index(x, y) * 3]; }
    [[nodiscard]] const float* pixel(int x, int y) const { return &rgb[index(x, y) * 3]; }

    int width;
    int height;
    /// Red, green, blue per pixel.
    std::vector<float> rgb;
    /// How much of each pixel people cover, 0…1.
    std::vector<float> coverage;
};

}  // namespace marrowby
