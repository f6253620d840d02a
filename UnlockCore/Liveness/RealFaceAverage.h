#pragma once

#include "UnlockCore/Liveness/AntiSpoofScore.h"

#include <cstdint>
#include <optional>

namespace marrowby {

/// The mean `live` probability of a look's newest scores, how many they are, and the newest one.
/// Without scores there is neither mean nor newest.
struct RealFaceAverage {
    std::optional<float> mean;
    std::int64_t frames = 0;
    std::optional<AntiSpoofScore> latest;

    friend bool operator==(const RealFaceAverage&, const RealFaceAverage&) = default;
};

}  // namespace marrowby
