#pragma once

#include <cstdint>

namespace marrowby {

/// The fine periodic pattern in one picture of a face.
struct MoireSample {
    /// How far the strongest isolated spectral peak stands above its surroundings, a ratio; 0
    /// without one.
    float peakContrast = 0;
    /// Side of the square that was analysed, pixels.
    std::int64_t patchSize = 0;

    friend bool operator==(const MoireSample&, const MoireSample&) = default;
};

}  // namespace marrowby
