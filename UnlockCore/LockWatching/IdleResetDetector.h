#pragma once

#include "UnlockCore/Foundation/Time.h"

#include <optional>

namespace marrowby {

/// Tells new input from input seen before by the system uptime at which it happened.
struct IdleResetDetector {
    /// A change of the last input's time by no more than this is not a new input.
    TimeInterval tolerance{0.05};
    /// Nothing until the first input is seen.
    std::optional<TimeInterval> lastEventUptime;

    /// The gap between the input seen before and this one, when this one is new. The first only
    /// calibrates.
    [[nodiscard]] std::optional<TimeInterval> see(TimeInterval inputUptime);
};

}  // namespace marrowby
