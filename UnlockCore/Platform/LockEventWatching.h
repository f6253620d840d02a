#pragma once

#include "UnlockCore/Platform/LockEvent.h"

#include <functional>

namespace marrowby {

/// Tells of the screen's lock and of the displays' sleep. Main thread. Starting twice and stopping
/// twice are harmless.
class LockEventWatching {
  public:
    virtual ~LockEventWatching() = default;

    /// Never called before start() has returned, nor after stop(). May destroy the watcher.
    std::function<void(LockEvent)> onEvent;

    /// From the displays' sleep to their wake, as told so far.
    [[nodiscard]] virtual bool isSleeping() const = 0;
    virtual void start() = 0;
    virtual void stop() = 0;
};

}  // namespace marrowby
