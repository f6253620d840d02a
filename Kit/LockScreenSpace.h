#pragma once

#include "UnlockCore/Platform/WindowServer.h"

#include <memory>

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

}  // namespace marrowby
