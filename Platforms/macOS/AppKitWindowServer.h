#pragma once

#include "UnlockCore/Platform/WindowServer.h"

namespace marrowby {

/// AppKit panels, the screen with the menu bar, and the private SkyLight functions, looked up at
/// run time. Coordinates in points from that screen's upper left corner. The pointer is polled
/// several times a second: its events may not reach a process behind the lock screen.
class AppKitWindowServer final : public WindowServer {
  public:
    [[nodiscard]] std::optional<ScreenGeometry> mainScreen() override;
    [[nodiscard]] std::unique_ptr<PointerWatch> watchPointer(
        std::function<void(const Point&)> onPlace) override;
    [[nodiscard]] std::int64_t shieldingWindowLevel() override;
    [[nodiscard]] std::unique_ptr<LockScreenPanel> makePanel(
        const PanelConfiguration& configuration, const Rect& frame,
        std::shared_ptr<PanelContent> content) override;
    [[nodiscard]] std::shared_ptr<SkyLightFunctions> loadSkyLight() override;
};

}  // namespace marrowby
