#pragma once

namespace marrowby {

/// How sharp a camera is. Pixels.
struct Optics {
    /// Standard deviation of the lens's blur.
    float blur = 0.17F;
    /// How wide the part of each pixel is that sees light: less than 1 where rows are skipped.
    float aperture = 0.45F;
};

}  // namespace marrowby
