#pragma once

#include "UnlockCore/Platform/InputIdle.h"

namespace marrowby {

/// The event system's idle time, and the HID system's own from the I/O registry. Both count every
/// key, button and pointer of the computer, and need no permission.
class CoreGraphicsInputIdle final : public InputIdle {
  public:
    [[nodiscard]] TimeInterval secondsSinceLastInput() const override;
    [[nodiscard]] std::optional<std::uint64_t> registryIdleNanoseconds() const override;
    [[nodiscard]] TimeInterval systemUptime() const override;
};

}  // namespace marrowby
