// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Tests/Fakes/FakeFourierTransform.h"

#include <array>
#include <random>
#include <vector>

#include <gtest/gtest.h>

namespace marrowby {

/// Checks a platform's transform against the definition.
inline void expectTheDefinition(const FourierTransform& transform) {
    std::mt19937 random(1);
    std::uniform_real_distribution<float> values(-100, 100);
    std::array<std::vector<float>, 4> planes;
    for (auto& plane : planes)
        plane.resize(FourierTransform::count);
    for (std::size_t i = 0; i < FourierTransform::count; ++i) {
        planes[0][i] = planes[2][i] = values(random);
        planes[1][i] = planes[3][i] = values(random);
    }
    const auto plane = [&](std::size_t i) {
        return FourierTransform::Plane(planes.at(i).data(), FourierTransform::count);
    };
    ASSERT_TRUE(transform.forward(plane(0), plane(1)));
    ASSERT_TRUE(FakeFourierTransform().forward(plane(2), plane(3)));
    for (std::size_t i = 0; i < FourierTransform::count; ++i) {
        ASSERT_NEAR(planes[0][i], planes[2][i], 0.1) << i;
        ASSERT_NEAR(planes[1][i], planes[3][i], 0.1) << i;
    }
}

}  // namespace marrowby
