// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Platform/FourierTransform.h"

#include <cmath>
#include <complex>
#include <cstddef>
#include <numbers>
#include <vector>

namespace marrowby {

/// Transforms by the definition, rows and then columns.
class FakeFourierTransform final : public FourierTransform {
  public:
    /// The system could not set it up.
    bool fails = false;

    [[nodiscard]] bool forward(Plane real, Plane imaginary) const override {
        if (fails) return false;
        for (std::size_t i = 0; i < side; ++i)
            transform(real, imaginary, i * side, 1);
        for (std::size_t i = 0; i < side; ++i)
            transform(real, imaginary, i, side);
        return true;
    }

  private:
    static void transform(Plane real, Plane imaginary, std::size_t first, std::size_t step) {
        std::vector<std::complex<double>> result(side);
        for (std::size_t k = 0; k < side; ++k) {
            for (std::size_t n = 0; n < side; ++n) {
                const double turn =
                    -2 * std::numbers::pi * static_cast<double>(k * n % side) / side;
                const std::complex<double> value(real[first + n * step],
                                                 imaginary[first + n * step]);
                result[k] += value * std::polar(1.0, turn);
            }
        }
        for (std::size_t k = 0; k < side; ++k) {
            real[first + k * step] = static_cast<float>(result[k].real());
            imaginary[first + k * step] = static_cast<float>(result[k].imag());
        }
    }
};

}  // namespace marrowby
