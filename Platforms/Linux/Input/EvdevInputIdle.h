#pragma once

#include "Platforms/Linux/Input/EvdevDevices.h"
#include "UnlockCore/Platform/InputIdle.h"

#include <filesystem>

namespace marrowby {

/// The idle time of all input devices that the user may read, by the kernel's own times: whoever
/// does not ask is not woken. Not a number while none can be read.
class EvdevInputIdle final : public InputIdle {
  public:
    explicit EvdevInputIdle(std::filesystem::path folder,
                            EvdevDevices::Describe describe = EvdevDevices::describe);

    [[nodiscard]] TimeInterval secondsSinceLastInput() const override;
    [[nodiscard]] std::optional<std::uint64_t> registryIdleNanoseconds() const override {
        return std::nullopt;
    }
    [[nodiscard]] TimeInterval systemUptime() const override;

  private:
    mutable EvdevDevices devices_;
    /// At first the time of the first question: what was before nobody knows.
    mutable std::optional<TimeInterval> lastInput_;
};

}  // namespace marrowby
