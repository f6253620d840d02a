#pragma once

namespace marrowby {

/// The hard, colourless highlights of one picture of a face.
struct GlareSample {
    /// Pixels.
    double cropPixelWidth = 0;
    /// Share of the pixels that are highlights, 0…1.
    float specularFraction = 0;
    /// Share of the highlights that lie in the fullest cell of an 8 x 8 grid, 0…1; 0 without
    /// highlights.
    float specularClusterRatio = 0;

    friend bool operator==(const GlareSample&, const GlareSample&) = default;
};

}  // namespace marrowby
