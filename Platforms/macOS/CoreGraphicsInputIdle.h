// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Platforms/macOS/Rules/HidInputIdle.h"

namespace marrowby {

/// Idle time of the event system, and of the HID system from the I/O registry. Both count all keys,
/// buttons and pointers of the computer and need no permission.
class CoreGraphicsInputIdle final : public IdleCounters {
  public:
    [[nodiscard]] TimeInterval secondsSinceLastEvent() const override;
    [[nodiscard]] std::optional<std::uint64_t> registryIdleNanoseconds() const override;
    [[nodiscard]] TimeInterval systemUptime() const override;
};

}  // namespace marrowby
