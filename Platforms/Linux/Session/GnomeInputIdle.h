// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Platform/InputIdle.h"

#include <memory>
#include <optional>
#include <string>

namespace marrowby {

/// Idle time from GNOME's org.gnome.Mutter.IdleMonitor on the session bus, also while the screen is
/// locked. Nothing where it is not there. Main thread, under Qt's event loop.
class GnomeInputIdle final : public InputIdle {
  public:
    explicit GnomeInputIdle(std::string busAddress);
    ~GnomeInputIdle() override;
    GnomeInputIdle(const GnomeInputIdle&) = delete;
    GnomeInputIdle& operator=(const GnomeInputIdle&) = delete;

    /// Call once.
    void start();

    [[nodiscard]] std::optional<TimeInterval> sinceLastInput() const override;
    [[nodiscard]] TimeInterval systemUptime() const override;

  private:
    class Monitor;

    const std::unique_ptr<Monitor> monitor_;
};

}  // namespace marrowby
