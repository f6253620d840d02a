// SPDX-License-Identifier: Apache-2.0
#include "Simulation/People/LinearImage.h"

namespace marrowby {

LinearImage::LinearImage(int imageWidth, int imageHeight, const Vector3& colour)
    : width(imageWidth), height(imageHeight) {
    const std::size_t count = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
    coverage.resize(count);
    rgb.resize(count * 3);
    for (std::size_t i = 0; i < rgb.size(); i += 3) {
        rgb[i] = colour.x;
        rgb[i + 1] = colour.y;
        rgb[i + 2] = colour.z;
    }
}

}  // namespace marrowby
