// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Foundation/Time.h"

#include <optional>
#include <vector>

namespace marrowby {

/// A scan's frame rate by the frames' timestamps: the median of the newest intervals, so that
/// neither a lost frame nor a burst changes it. A faster rate is adopted after two intervals,
/// because it demands more frames, a slower one after four. A value.
class FrameRateEstimate {
  public:
    /// Frames per second that the camera is asked for, and that are assumed until measured.
    static constexpr double assumed = 30;

    /// The next frame's timestamp. One older than the last does not count.
    void add(Date stamp);

    [[nodiscard]] double framesPerSecond() const;
    /// Whether `stamp` follows `last` much sooner than a frame takes: a burst, or a rate not yet
    /// adopted.
    [[nodiscard]] bool isBurst(Date last, Date stamp) const;

  private:
    /// Seconds, the newest last.
    std::vector<double> intervals_;
    std::optional<Date> newest_;
};

}  // namespace marrowby
