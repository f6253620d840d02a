// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Platforms/macOS/Rules/SkyLightSpace.h"
#include "UnlockCore/Platform/WindowServer.h"

#include <memory>
#include <optional>

namespace marrowby {

/// AppKit panels, the screen with the menu bar, and the private SkyLight functions, looked up at
/// run time. Coordinates in points from that screen's upper left corner. The pointer is polled
/// several times a second: its events may not reach a process behind the lock screen.
class AppKitWindowServer final : public WindowServer {
  public:
    [[nodiscard]] std::optional<ScreenGeometry> mainScreen() override;
    [[nodiscard]] ActiveDisplays activeDisplays() override;
    [[nodiscard]] std::unique_ptr<PointerWatch> watchPointer(
        std::function<void(const Point&)> onPlace) override;
    [[nodiscard]] std::unique_ptr<LockScreenPanel> makePanel(
        const Rect& frame, std::shared_ptr<PanelContent> content) override;
    [[nodiscard]] bool hasLockScreenSpaces() override { return functions() != nullptr; }
    [[nodiscard]] std::unique_ptr<LockScreenSpace> makeLockScreenSpace() override;

  private:
    [[nodiscard]] const std::shared_ptr<SkyLightFunctions>& functions();

    /// Set by the first lookup, found or not.
    std::optional<std::shared_ptr<SkyLightFunctions>> functions_;
};

}  // namespace marrowby
