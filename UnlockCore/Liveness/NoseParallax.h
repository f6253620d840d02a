// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Liveness/LivenessFrame.h"

#include <span>

namespace marrowby {

/// How the nose followed the head's turn over some frames.
struct NoseParallax {
    /// 0…1: the share of the reported turns that the nose's offset confirms.
    double strength = 0;
    /// 1 when the nose followed the head, -1 when it moved against it, 0 without evidence.
    int direction = 0;

    /// The nose's offset gives a turn of its own, atan(offset / nose length). Frames whose reported
    /// yaws differ by at least 10 degrees are compared; a pair's strength is the share of the
    /// reported turn that the nose confirms, 0 where the two differ by over 15 degrees. A flat
    /// picture's nose confirms none.
    [[nodiscard]] static NoseParallax measure(std::span<const LivenessFrame> frames);
    [[nodiscard]] bool passes() const { return strength >= 0.8 && direction > 0; }

    friend bool operator==(const NoseParallax&, const NoseParallax&) = default;
};

}  // namespace marrowby
