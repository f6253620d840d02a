#pragma once

#include "UnlockCore/Platform/ScreenLock.h"
#include "UnlockCore/Platform/WindowServer.h"

#include <cstdint>
#include <memory>
#include <optional>

namespace marrowby {

/// A space of the window server above the lock screen. It is never destroyed while the process
/// lives; windows leave it through remove(). Main thread.
class LockScreenSpace {
  public:
    /// Above everything that the lock screen shows.
    static constexpr std::int32_t absoluteLevel = 400;
    /// Out of all other spaces.
    static constexpr std::int32_t moveOptions = 7;

    explicit LockScreenSpace(std::shared_ptr<SkyLightFunctions> functions);

    void add(const LockScreenPanel& window);
    void remove(const LockScreenPanel& window);

  private:
    const std::shared_ptr<SkyLightFunctions> functions_;
    const SkyLightFunctions::Connection connection_;
    const SkyLightFunctions::Space space_;
};

/// What all lock-screen windows of a process share: the shield's level, the private functions and
/// the one space, each made on first use. Main thread; what it is made of outlives it.
class LockScreen {
  public:
    LockScreen(WindowServer& server, const LockStateReading& lockState)
        : server_(server), lockState_(lockState) {}
    LockScreen(const LockScreen&) = delete;
    LockScreen& operator=(const LockScreen&) = delete;

    [[nodiscard]] WindowServer& server() { return server_; }
    /// Of a window that lies just above the shield.
    [[nodiscard]] std::int64_t windowLevel();
    [[nodiscard]] bool isSpaceAvailable();
    /// While the screen is locked, and where there can be one.
    [[nodiscard]] LockScreenSpace* spaceIfLocked();

  private:
    [[nodiscard]] const std::shared_ptr<SkyLightFunctions>& functions();

    WindowServer& server_;
    const LockStateReading& lockState_;
    std::optional<std::int64_t> windowLevel_;
    /// Set by the first lookup, found or not.
    std::optional<std::shared_ptr<SkyLightFunctions>> functions_;
    std::optional<LockScreenSpace> space_;
};

}  // namespace marrowby
