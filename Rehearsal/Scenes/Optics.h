#pragma once

#include "UnlockCore/Foundation/Time.h"

namespace marrowby {

/// How sharp a camera is. Pixels.
struct Optics {
    /// Standard deviation of the lens's blur.
    float blur = 0.17F;
    /// How wide the part of each pixel is that sees light: less than 1 where rows are skipped.
    float aperture = 0.45F;
};

/// When the camera's sensor looks: its first row from `opens` for `open`, each further row so much
/// later.
struct Shutter {
    TimeInterval opens{};
    TimeInterval open{0.01};
    TimeInterval perRow{};
};

/// How strong a light of mean 1 looks in this row that swings by `depth` `rate` times a second.
[[nodiscard]] float swing(const Shutter& shutter, int row, float depth, float rate);

}  // namespace marrowby
