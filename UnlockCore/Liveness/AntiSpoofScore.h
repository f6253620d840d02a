#pragma once

namespace marrowby {

/// The real-face model's probabilities, 0…1, that one face is live: fused, and of the 2.7× and
/// the 4.0× crop alone.
struct AntiSpoofScore {
    float live = 0;
    float live27 = 0;
    float live40 = 0;

    friend bool operator==(const AntiSpoofScore&, const AntiSpoofScore&) = default;
};

}  // namespace marrowby
