// SPDX-License-Identifier: Apache-2.0
#include "Kit/LockScreenWindow.h"

#include <utility>

namespace marrowby {

LockScreenWindow::LockScreenWindow(LockScreen& lockScreen, std::shared_ptr<PanelContent> content,
                                   const Rect& frame)
    : lockScreen_(lockScreen), panel_(lockScreen.server().makePanel(frame, std::move(content))) {}

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
