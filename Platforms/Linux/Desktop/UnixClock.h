// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Foundation/Time.h"
#include "UnlockCore/Platform/SystemClock.h"

#include <time.h>

namespace marrowby::unixtime {

/// Offset from the Unix epoch to Date's epoch, 2001-01-01.
inline constexpr TimeInterval toDateEpoch{978'307'200};

/// Seconds since boot, suspend excluded (CLOCK_MONOTONIC): the time base of the X server and of
/// input events.
[[nodiscard]] inline TimeInterval uptime() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return std::chrono::seconds(now.tv_sec) + std::chrono::nanoseconds(now.tv_nsec);
}

}  // namespace marrowby::unixtime

namespace marrowby {

class UnixSystemClock final : public SystemClock {
  public:
    [[nodiscard]] Date now() const override;
};

}  // namespace marrowby
