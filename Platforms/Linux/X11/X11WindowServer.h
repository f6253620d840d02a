// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Platform/WindowServer.h"

#include <memory>
#include <optional>
#include <string>

namespace marrowby {

/// Panels above an X display's screen locker: borderless, click-through, placed by PanelPlacement.
/// Connects only while a panel is shown or the pointer is watched; a panel reconnects when it is
/// ordered front. Does nothing without a display. On the thread of Qt's event loop, under a
/// QGuiApplication, which draws the text.
class X11WindowServer final : public WindowServer {
  public:
    explicit X11WindowServer(std::optional<std::string> displayName);

    [[nodiscard]] std::unique_ptr<LockScreenPanel> makePanel(
        const Rect& frame, std::shared_ptr<PanelContent> content) override;
    /// X has no spaces.
    [[nodiscard]] bool hasLockScreenSpaces() override { return false; }
    [[nodiscard]] std::unique_ptr<LockScreenSpace> makeLockScreenSpace() override {
        return nullptr;
    }
    [[nodiscard]] std::optional<ScreenGeometry> mainScreen() override;
    [[nodiscard]] ActiveDisplays activeDisplays() override;
    [[nodiscard]] std::unique_ptr<PointerWatch> watchPointer(
        std::function<void(const Point&)> onPlace) override;

  private:
    std::optional<std::string> displayName_;
};

}  // namespace marrowby
