#pragma once

#include "UnlockCore/Liveness/LivenessFrame.h"

#include <span>

namespace marrowby {

/// How the nose followed the head's turn over some frames.
struct NoseParallax {
    /// 0…1: how much of the reported turns the nose's offset tells as well.
    double strength = 0;
    /// 1 when the nose went the way the head turned, -1 when it went the other, 0 without evidence.
    int direction = 0;

    /// The offset of a nose that stands out by its own length tells a turn of its own,
    /// atan(offset / length). Frames whose reported yaws differ by at least 10 degrees are
    /// compared: a pair's part of the strength is the share of the reported turn that the nose
    /// tells, and none where the two are further than 15 degrees apart. A flat picture's nose tells
    /// none.
    [[nodiscard]] static NoseParallax measure(std::span<const LivenessFrame> frames);
    [[nodiscard]] bool passes() const { return strength >= 0.8 && direction > 0; }

    friend bool operator==(const NoseParallax&, const NoseParallax&) = default;
};

}  // namespace marrowby
