#pragma once

#include "UnlockCore/Platform/WindowServer.h"

namespace marrowby {

/// Panels of AppKit, the screen with the menu bar, and the private entry points looked up at run
/// time. Places are in points from that screen's upper left corner. The pointer is asked for its
/// place several times a second while it is watched: its events may not reach a process behind the
/// lock screen.
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
