// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Foundation/Time.h"

namespace marrowby {

/// How sharp a camera is. Pixels.
struct Optics {
    /// Standard deviation of the lens's blur.
    float blur = 0.17F;
    /// The width of a pixel's light-sensitive part: less than 1 where rows are skipped.
    float aperture = 0.45F;
};

/// A rolling shutter: the first row is exposed from `opens` for `open`, each further row later by
/// `perRow`.
struct Shutter {
    TimeInterval opens{};
    TimeInterval open{0.01};
    TimeInterval perRow{};
};

/// The mean brightness in this row of a light of mean 1 that swings by `depth`, `rate` times a
/// second.
[[nodiscard]] float swing(const Shutter& shutter, int row, float depth, float rate);

}  // namespace marrowby
