// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Platform/InputIdle.h"

#include <memory>
#include <optional>
#include <string>

namespace marrowby {

/// Idle time of a Wayland compositor's first seat, by ext-idle-notify-v1, also while the screen is
/// locked. Nothing where the compositor lacks it or has gone. Main thread, under Qt's event loop.
class WaylandInputIdle final : public InputIdle {
  public:
    /// As in WAYLAND_DISPLAY.
    explicit WaylandInputIdle(const std::string& display);
    ~WaylandInputIdle() override;
    WaylandInputIdle(const WaylandInputIdle&) = delete;
    WaylandInputIdle& operator=(const WaylandInputIdle&) = delete;

    [[nodiscard]] std::optional<TimeInterval> sinceLastInput() const override;
    [[nodiscard]] TimeInterval systemUptime() const override;

  private:
    class Client;

    const std::unique_ptr<Client> client_;
};

}  // namespace marrowby
