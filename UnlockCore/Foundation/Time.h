// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <ratio>

namespace marrowby {

/// The wall clock's scale: double seconds since 2001-01-01 00:00 UTC, the epoch that stored dates
/// use. No now(): time comes from a SystemClock or an argument.
struct WallClock {
    using rep = double;
    using period = std::ratio<1>;
    using duration = std::chrono::duration<rep, period>;
    using time_point = std::chrono::time_point<WallClock>;
    static constexpr bool is_steady = false;
};

/// A length of time in seconds.
using TimeInterval = WallClock::duration;

/// An instant of wall-clock time.
using Date = WallClock::time_point;

}  // namespace marrowby
