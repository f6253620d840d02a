// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <span>

namespace marrowby {

/// The system's two-dimensional Fourier transform of 64 x 64 complex values, set up once. Any
/// thread.
class FourierTransform {
  public:
    static constexpr std::size_t side = 64;
    static constexpr std::size_t count = side * side;
    using Plane = std::span<float, count>;

    virtual ~FourierTransform() = default;

    /// The forward transform, not scaled, in place; rows one after another. False where the system
    /// could not set it up: the values then mean nothing.
    [[nodiscard]] virtual bool forward(Plane real, Plane imaginary) const = 0;
};

}  // namespace marrowby
