// SPDX-License-Identifier: Apache-2.0
#include "Simulation/Measuring/Proportion.h"

#include <cmath>

namespace marrowby {

namespace {

constexpr double tail = 0.025;

/// The probability of at most `count` of `total` at the rate `p`.
double atMost(std::int64_t count, std::int64_t total, double p) {
    if (p <= 0) return 1;
    if (p >= 1) return count >= total ? 1 : 0;
    const auto n = static_cast<double>(total);
    double sum = 0;
    for (std::int64_t i = 0; i <= count; ++i) {
        const auto k = static_cast<double>(i);
        sum += std::exp(std::lgamma(n + 1) - std::lgamma(k + 1) - std::lgamma(n - k + 1) +
                        k * std::log(p) + (n - k) * std::log1p(-p));
    }
    return sum;
}

/// The rate at which at most `count` of `total` has the probability `wanted`.
double rateAt(std::int64_t count, std::int64_t total, double wanted) {
    double low = 0;
    double high = 1;
    for (int i = 0; i < 60; ++i) {
        const double middle = (low + high) / 2;
        (atMost(count, total, middle) > wanted ? low : high) = middle;
    }
    return (low + high) / 2;
}

}  // namespace

double Proportion::rate() const {
    return total > 0 ? static_cast<double>(count) / static_cast<double>(total) : 0;
}

Proportion::Interval Proportion::interval() const {
    if (total <= 0) return {};
    return {.low = count > 0 ? rateAt(count - 1, total, 1 - tail) : 0,
            .high = count < total ? rateAt(count, total, tail) : 1};
}

}  // namespace marrowby
