// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <memory>
#include <string>

namespace marrowby {

/// Whether KWin has switched all displays off, also while the screen is locked, by
/// org_kde_kwin_dpms. Other compositors say nothing, which counts as on. Main thread, under Qt's
/// event loop.
class KWinDisplays {
  public:
    /// As in WAYLAND_DISPLAY.
    explicit KWinDisplays(const std::string& display);
    ~KWinDisplays();
    KWinDisplays(const KWinDisplays&) = delete;
    KWinDisplays& operator=(const KWinDisplays&) = delete;

    /// After each change of areAsleep(); must not destroy this object.
    std::function<void()> onChange;

    [[nodiscard]] bool areAsleep() const;

  private:
    class Client;

    const std::unique_ptr<Client> client_;
};

}  // namespace marrowby
