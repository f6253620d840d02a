// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace marrowby {

/// Whether GNOME Shell saves the displays' power, also while the screen is locked, by the property
/// PowerSaveMode of org.gnome.Mutter.DisplayConfig. What is not known counts as on, and so does
/// what another user's shell says. Main thread, under Qt's event loop.
class GnomeDisplays {
  public:
    /// `user`: whose shell is believed.
    GnomeDisplays(const std::string& busAddress, std::uint32_t user);
    ~GnomeDisplays();
    GnomeDisplays(const GnomeDisplays&) = delete;
    GnomeDisplays& operator=(const GnomeDisplays&) = delete;

    /// After each change of areAsleep(); must not destroy this object.
    std::function<void()> onChange;

    /// Call once.
    void start();

    [[nodiscard]] bool areAsleep() const;

  private:
    class Shell;

    const std::unique_ptr<Shell> shell_;
};

}  // namespace marrowby
