// SPDX-License-Identifier: Apache-2.0
#include "Simulation/Scenes/Performance.h"

#include "Simulation/Scenes/Chance.h"

#include <algorithm>
#include <cmath>

namespace marrowby {

float blinkAt(TimeInterval time, std::uint64_t seed) {
    constexpr double every = 4;
    constexpr double closing = 0.09;
    constexpr double shut = 0.05;
    constexpr double opening = 0.18;
    const double window = std::floor(time.count() / every);
    Chance chance(seed * 7919 + static_cast<std::uint64_t>(static_cast<std::int64_t>(window)));
    const double begin = chance.between(0.2, every - closing - shut - opening);
    const double since = time.count() - window * every - begin;
    const double lid = std::min(since / closing, (closing + shut + opening - since) / opening);
    return static_cast<float>(std::clamp(lid, 0.0, 1.0));
}

}  // namespace marrowby
