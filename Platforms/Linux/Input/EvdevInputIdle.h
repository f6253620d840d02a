// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Platforms/Linux/Input/EvdevDevices.h"
#include "UnlockCore/Platform/InputIdle.h"

#include <filesystem>

namespace marrowby {

/// Idle time of all readable input devices, from the kernel's event timestamps, read only when
/// asked. Nothing while none is readable.
class EvdevInputIdle final : public InputIdle {
  public:
    explicit EvdevInputIdle(std::filesystem::path folder,
                            EvdevDevices::Describe describe = EvdevDevices::describe);

    [[nodiscard]] std::optional<TimeInterval> sinceLastInput() const override;
    [[nodiscard]] TimeInterval systemUptime() const override;

  private:
    mutable EvdevDevices devices_;
    /// Starts as the time of the first call: earlier input is unknown.
    mutable std::optional<TimeInterval> lastInput_;
};

}  // namespace marrowby
