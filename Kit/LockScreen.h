// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Platform/ScreenLock.h"
#include "UnlockCore/Platform/WindowServer.h"

#include <memory>

namespace marrowby {

/// What all lock-screen windows of a process share: one space, made when it is first needed. Main
/// thread; what it is made of outlives it.
class LockScreen {
  public:
    LockScreen(WindowServer& server, const LockStateReading& lockState)
        : server_(server), lockState_(lockState) {}
    LockScreen(const LockScreen&) = delete;
    LockScreen& operator=(const LockScreen&) = delete;

    [[nodiscard]] WindowServer& server() { return server_; }
    [[nodiscard]] bool isSpaceAvailable() { return server_.hasLockScreenSpaces(); }
    /// While the screen is locked, and where there can be one.
    [[nodiscard]] LockScreenSpace* spaceIfLocked();

  private:
    WindowServer& server_;
    const LockStateReading& lockState_;
    std::unique_ptr<LockScreenSpace> space_;
};

}  // namespace marrowby
