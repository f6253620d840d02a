// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Platform/InputIdle.h"

#include <cstdint>
#include <optional>

namespace marrowby {

namespace inputidle {

/// The state of the event source and the type of event.
inline constexpr std::int32_t hidSystemState = 1;
inline constexpr std::uint32_t anyInputEvent = 0xFFFF'FFFF;
/// The entry of the device registry and its property.
inline constexpr const char* registryService = "IOHIDSystem";
inline constexpr const char* registryProperty = "HIDIdleTime";

}  // namespace inputidle

/// What macOS tells of the time since the last input. Main thread, but for systemUptime().
class IdleCounters {
  public:
    virtual ~IdleCounters() = default;
    /// Of the event system; may be negative, absurd or not finite.
    [[nodiscard]] virtual TimeInterval secondsSinceLastEvent() const = 0;
    /// Of the device registry; nothing where it has no such entry.
    [[nodiscard]] virtual std::optional<std::uint64_t> registryIdleNanoseconds() const = 0;
    [[nodiscard]] virtual TimeInterval systemUptime() const = 0;
};

/// The event system's idle time or, where that makes no sense, the registry's. The counters outlive
/// it.
class HidInputIdle final : public InputIdle {
  public:
    explicit HidInputIdle(const IdleCounters& counters) : counters_(counters) {}

    [[nodiscard]] std::optional<TimeInterval> sinceLastInput() const override;
    [[nodiscard]] TimeInterval systemUptime() const override { return counters_.systemUptime(); }

  private:
    const IdleCounters& counters_;
};

}  // namespace marrowby
