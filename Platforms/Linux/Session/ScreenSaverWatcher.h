// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Platforms/Linux/Session/SessionState.h"
#include "UnlockCore/Foundation/Mutex.h"

#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace marrowby {

/// Whether a screen saver on the session bus is active. Unknown without a bus or saver; recovers
/// when they return. Main thread, under Qt's event loop.
class ScreenSaverWatcher {
  public:
    explicit ScreenSaverWatcher(std::string busAddress);
    ~ScreenSaverWatcher();
    ScreenSaverWatcher(const ScreenSaverWatcher&) = delete;
    ScreenSaverWatcher& operator=(const ScreenSaverWatcher&) = delete;

    /// After each change of the reading; must not destroy the watcher.
    std::function<void()> onChange;
    /// The connected bus has gone; must not destroy the watcher.
    std::function<void()> onBusLost;

    /// Call once.
    void start();

    /// `locked` when a saver is active, `unlocked` when none is and at least one answers. Any
    /// thread.
    [[nodiscard]] LockReading reading() const;
    /// Until a lost bus is back. Main thread.
    [[nodiscard]] bool isBusLost() const;
    /// Bus name of an active saver, or empty.
    [[nodiscard]] std::string_view activeSaver() const;

  private:
    class Savers;

    void set(LockReading reading);

    mutable Mutex mutex_;
    LockReading reading_ GUARDED_BY(mutex_) = LockReading::unknown;
    std::unique_ptr<Savers> savers_;
};

}  // namespace marrowby
