// SPDX-License-Identifier: Apache-2.0
#include "Platforms/macOS/Rules/HidInputIdle.h"

#include <chrono>
#include <ratio>

namespace marrowby {

namespace {

/// Before any input the event system reports more than this.
constexpr TimeInterval idleLimit{100'000'000};

}  // namespace

std::optional<TimeInterval> HidInputIdle::sinceLastInput() const {
    // NaN fails both comparisons.
    const TimeInterval idle = counters_.secondsSinceLastEvent();
    if (idle >= TimeInterval::zero() && idle < idleLimit) return idle;

    const std::optional<std::uint64_t> registered = counters_.registryIdleNanoseconds();
    if (!registered) return std::nullopt;
    return std::chrono::duration<double, std::nano>(static_cast<double>(*registered));
}

}  // namespace marrowby
