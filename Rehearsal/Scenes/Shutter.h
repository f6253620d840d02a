#pragma once

#include "UnlockCore/Foundation/Time.h"

namespace marrowby {

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
