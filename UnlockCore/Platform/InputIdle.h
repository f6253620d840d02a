#pragma once

#include "UnlockCore/Foundation/Time.h"

#include <cstdint>
#include <optional>

namespace marrowby {

/// Constants of macOS.
namespace inputidle {

/// The state of the event source and the type of event.
inline constexpr std::int32_t hidSystemState = 1;
inline constexpr std::uint32_t anyInputEvent = 0xFFFF'FFFF;
/// The entry of the device registry and its property.
inline constexpr const char* registryService = "IOHIDSystem";
inline constexpr const char* registryProperty = "HIDIdleTime";

}  // namespace inputidle

/// Time since the last key, button or pointer input. Main thread.
class InputIdle {
  public:
    virtual ~InputIdle() = default;
    /// As the event system reports it; may be negative, absurd or not finite.
    [[nodiscard]] virtual TimeInterval secondsSinceLastInput() const = 0;
    /// The same from the device registry; nothing where it has no such entry.
    [[nodiscard]] virtual std::optional<std::uint64_t> registryIdleNanoseconds() const = 0;
    /// Time since the computer started, not counting sleep; never goes back. Any thread.
    [[nodiscard]] virtual TimeInterval systemUptime() const = 0;
};

}  // namespace marrowby
