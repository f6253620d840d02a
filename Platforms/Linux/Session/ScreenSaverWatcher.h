#pragma once

#include "Platforms/Linux/Session/SessionState.h"
#include "UnlockCore/Foundation/Mutex.h"

#include <functional>
#include <memory>
#include <string>

namespace marrowby {

/// Whether a screen saver on the session bus says that it is on. Main thread, under Qt's event
/// loop. While there is no bus or no saver on it, unknown; it follows them when they come back.
class ScreenSaverWatcher {
  public:
    explicit ScreenSaverWatcher(std::string busAddress);
    ~ScreenSaverWatcher();
    ScreenSaverWatcher(const ScreenSaverWatcher&) = delete;
    ScreenSaverWatcher& operator=(const ScreenSaverWatcher&) = delete;

    /// After each change of the reading; must not destroy the watcher.
    std::function<void()> onChange;

    /// Once.
    void start();

    /// `locked` where one is on, `unlocked` where none is and one says so. Any thread.
    [[nodiscard]] LockReading reading() const;

  private:
    class Savers;

    void set(LockReading reading);

    mutable Mutex mutex_;
    LockReading reading_ GUARDED_BY(mutex_) = LockReading::unknown;
    std::unique_ptr<Savers> savers_;
};

}  // namespace marrowby
