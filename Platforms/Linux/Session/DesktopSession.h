#pragma once

#include "UnlockCore/Platform/InputIdle.h"
#include "UnlockCore/Platform/LockEventWatching.h"
#include "UnlockCore/Platform/LockStateReading.h"
#include "UnlockCore/Platform/MainThread.h"
#include "UnlockCore/Platform/SpaceKeys.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace marrowby {

/// The user's session on a Linux desktop, put together from the display, logind, the screen savers
/// on the session bus and the kernel's input devices, each of which may come and go. Main thread,
/// under Qt's event loop.
class DesktopSession {
  public:
    /// Where its sources are found.
    struct Places {
        /// Empty where there is none.
        std::string systemBus;
        std::string sessionBus;
        /// Nothing where no X server sees all input: on Wayland and on the console.
        std::optional<std::string> display;
        std::string inputDevices = "/dev/input";

        /// By the environment.
        [[nodiscard]] static Places ofThisProcess();
    };

    DesktopSession(Places places, MainThread& mainThread);
    ~DesktopSession();
    DesktopSession(const DesktopSession&) = delete;
    DesktopSession& operator=(const DesktopSession&) = delete;

    /// With a sentence for the user, whenever the display is gone or was not there at the start.
    std::function<void(const std::string&)> onDisplayAway;

    /// Once.
    void start();

    [[nodiscard]] LockEventWatching& lockEvents();
    [[nodiscard]] const LockStateReading& lockState() const;
    [[nodiscard]] InputIdle& inputIdle();
    [[nodiscard]] SpaceKeys& spaceKeys();

  private:
    struct Sources;
    std::unique_ptr<Sources> sources_;
};

}  // namespace marrowby
