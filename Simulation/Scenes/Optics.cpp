// SPDX-License-Identifier: Apache-2.0
#include "Simulation/Scenes/Optics.h"

#include <cmath>
#include <numbers>

namespace marrowby {

float swing(const Shutter& shutter, int row, float depth, float rate) {
    constexpr double pi = std::numbers::pi;
    const double cycles = rate * shutter.open.count();
    const double evened = cycles > 0 ? std::sin(pi * cycles) / (pi * cycles) : 1;
    const double middle = (shutter.opens + shutter.open / 2 + shutter.perRow * row).count();
    return static_cast<float>(1 + depth * evened * std::cos(2 * pi * rate * middle));
}

}  // namespace marrowby
