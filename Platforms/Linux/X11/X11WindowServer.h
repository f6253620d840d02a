#pragma once

#include "UnlockCore/Platform/WindowServer.h"

#include <memory>
#include <optional>
#include <string>

namespace marrowby {

/// Panels above the screen locker of an X display: borderless, clicked through, and where the
/// locker and the compositor let them lie (PanelPlacement). Connected only while one is shown or
/// the pointer is watched; a panel of a lost display connects again when it is ordered front.
/// Without a display there is nothing. On the thread of Qt's event loop, under a QGuiApplication,
/// which draws the text.
class X11WindowServer final : public WindowServer {
  public:
    explicit X11WindowServer(std::optional<std::string> displayName);

    /// X has no levels.
    [[nodiscard]] std::int64_t shieldingWindowLevel() override { return 0; }
    [[nodiscard]] std::unique_ptr<LockScreenPanel> makePanel(
        const PanelConfiguration& configuration, const Rect& frame,
        std::shared_ptr<PanelContent> content) override;
    [[nodiscard]] std::shared_ptr<SkyLightFunctions> loadSkyLight() override { return nullptr; }
    [[nodiscard]] std::optional<ScreenGeometry> mainScreen() override;
    [[nodiscard]] std::unique_ptr<PointerWatch> watchPointer(
        std::function<void(const Point&)> onPlace) override;

  private:
    std::optional<std::string> displayName_;
};

}  // namespace marrowby
