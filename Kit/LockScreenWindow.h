// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Kit/LockScreen.h"
#include "UnlockCore/Platform/WindowServer.h"

#include <memory>

namespace marrowby {

/// A panel above the lock screen where the system allows it. Main thread; the lock screen outlives
/// it.
class LockScreenWindow {
  public:
    LockScreenWindow(LockScreen& lockScreen, std::shared_ptr<PanelContent> content,
                     const Rect& frame);
    LockScreenWindow(const LockScreenWindow&) = delete;
    LockScreenWindow& operator=(const LockScreenWindow&) = delete;

    /// False where the system has no window to give.
    [[nodiscard]] bool exists() const { return panel_ != nullptr; }
    /// Whether it is in the lock screen's space; without one it is shown only with
    /// `showWithoutSpace`.
    [[nodiscard]] bool show(const Rect& frame, bool showWithoutSpace);
    void hide();

  private:
    LockScreen& lockScreen_;
    const std::unique_ptr<LockScreenPanel> panel_;
    bool inLockScreenSpace_ = false;
};

}  // namespace marrowby
