// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Platform/InputIdle.h"
#include "UnlockCore/Platform/MainThread.h"
#include "UnlockCore/Platform/ScreenLock.h"
#include "UnlockCore/Platform/SessionUnlocking.h"
#include "UnlockCore/Platform/SpaceKeys.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace marrowby {

/// The user's session on a Linux desktop: combines the X display, logind, screen savers on the
/// session bus and the kernel's input devices, each of which may come and go. Main thread, under
/// Qt's event loop.
class DesktopSession {
  public:
    struct Places {
        /// Empty when there is no such bus.
        std::string systemBus;
        std::string sessionBus;
        /// Only where the X server sees all input: not on Wayland or the console.
        std::optional<std::string> display;
        std::string inputDevices = "/dev/input";
        bool isWayland = false;
        /// Of the compositor; empty where unknown.
        std::string waylandDisplay{};
        std::string policy = "/etc/marrowby-unlock/policy.conf";

        [[nodiscard]] static Places ofThisProcess();
    };

    DesktopSession(Places places, MainThread& mainThread);
    ~DesktopSession();
    DesktopSession(const DesktopSession&) = delete;
    DesktopSession& operator=(const DesktopSession&) = delete;

    /// Called with a sentence for the log when the display is missing at the start or lost, or
    /// the session bus is lost.
    std::function<void(const std::string&)> onAway;

    /// Whether this process may type through the kernel; may be empty. Set before start().
    std::function<bool()> canTypeThroughKernel;

    /// Call once.
    void start();

    [[nodiscard]] LockEventWatching& lockEvents();
    [[nodiscard]] const LockStateReading& lockState() const;
    [[nodiscard]] InputIdle& inputIdle();
    [[nodiscard]] SpaceKeys& spaceKeys();
    /// Null where the password is typed.
    [[nodiscard]] SessionUnlocking* unlocking();

  private:
    struct Sources;
    std::unique_ptr<Sources> sources_;
};

}  // namespace marrowby
