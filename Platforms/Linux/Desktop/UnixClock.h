#pragma once

#include "UnlockCore/Foundation/Time.h"
#include "UnlockCore/Platform/SystemClock.h"

#include <time.h>

namespace marrowby::unixtime {

/// From 1970-01-01, where Unix time starts, to 2001-01-01, where Date does.
inline constexpr TimeInterval toDateEpoch{978'307'200};

/// Since the computer started. Stands still while it sleeps, as do an X server's own time and the
/// times of input events.
[[nodiscard]] inline TimeInterval uptime() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return std::chrono::seconds(now.tv_sec) + std::chrono::nanoseconds(now.tv_nsec);
}

}  // namespace marrowby::unixtime

namespace marrowby {

/// The wall clock as the C library tells it.
class UnixSystemClock final : public SystemClock {
  public:
    [[nodiscard]] Date now() const override;
};

}  // namespace marrowby
