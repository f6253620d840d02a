#include "Kit/LockScreenWindow.h"

#include <utility>

namespace marrowby {

namespace {

// Numbers of AppKit: NSWindowStyleMaskNonactivatingPanel, NSBackingStoreBuffered, can join all
// spaces + stationary + ignores cycle + full-screen auxiliary, NSWindowAnimationBehaviorNone.
constexpr std::uint64_t nonactivatingPanel = 128;
constexpr std::uint64_t buffered = 2;
constexpr std::uint64_t everywhere = 337;
constexpr std::int64_t noAnimation = 2;

}  // namespace

PanelConfiguration LockScreenWindow::configuration(std::int64_t level) {
    return {.styleMask = nonactivatingPanel,
            .backing = buffered,
            .isDeferred = false,
            .isOpaque = false,
            .hasClearBackground = true,
            .hasShadow = false,
            .isMovable = false,
            .isReleasedWhenClosed = false,
            .hidesOnDeactivate = false,
            .level = level,
            .collectionBehavior = everywhere,
            .animationBehavior = noAnimation,
            .ignoresMouseEvents = true,
            .acceptsMouseMovedEvents = true,
            .canBecomeVisibleWithoutLogin = true};
}

LockScreenWindow::LockScreenWindow(LockScreen& lockScreen, std::shared_ptr<PanelContent> content,
                                   const Rect& frame)
    : lockScreen_(lockScreen),
      panel_(lockScreen.server().makePanel(configuration(lockScreen.windowLevel()), frame,
                                           std::move(content))) {}

bool LockScreenWindow::show(const Rect& frame, bool showWithoutSpace) {
    if (!panel_) return false;
    LockScreenSpace* const space = lockScreen_.spaceIfLocked();
    if (!space && !showWithoutSpace) return false;
    panel_->setFrame(frame);
    panel_->orderFront();
    if (space && !std::exchange(inLockScreenSpace_, true)) space->add(*panel_);
    return inLockScreenSpace_;
}

void LockScreenWindow::hide() {
    if (panel_) panel_->orderOut();
}

}  // namespace marrowby
