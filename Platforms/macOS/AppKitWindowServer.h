#pragma once

#include "UnlockCore/Platform/WindowServer.h"

@class NSView;

namespace marrowby {

/// A view that fills a panel.
class AppKitPanelContent final : public PanelContent {
  public:
    explicit AppKitPanelContent(NSView* view) : view_(view) {}
    [[nodiscard]] NSView* view() const { return view_; }

  private:
    NSView* view_;
};

/// Panels of AppKit, in its screen's points with the origin at the bottom-left, and the private
/// entry points looked up at run time. The panels' content is AppKitPanelContent.
class AppKitWindowServer final : public WindowServer {
  public:
    [[nodiscard]] std::int64_t shieldingWindowLevel() override;
    [[nodiscard]] std::unique_ptr<LockScreenPanel> makePanel(
        const PanelConfiguration& configuration, const Rect& frame,
        std::shared_ptr<PanelContent> content) override;
    [[nodiscard]] std::shared_ptr<SkyLightFunctions> loadSkyLight() override;
};

}  // namespace marrowby
