#pragma once

#include "Platforms/Linux/Session/LogindWatcher.h"
#include "Platforms/Linux/Session/ScreenSaverWatcher.h"
#include "Platforms/Linux/Session/SessionState.h"
#include "Platforms/Linux/X11/X11Display.h"
#include "UnlockCore/Platform/LockEventWatching.h"
#include "UnlockCore/Platform/LockStateReading.h"
#include "UnlockCore/Platform/MainThread.h"

#include <memory>

namespace marrowby {

/// The lock and the sleep of the user's session as all sources together know them. What it is given
/// outlives it. Main thread, but for state().
class LinuxLockMonitor final : public LockEventWatching, public LockStateReading {
  public:
    /// `display`: null where no X server sees the lockers’ windows.
    LinuxLockMonitor(const LogindWatcher& logind, const ScreenSaverWatcher& savers,
                     const X11Display* display, MainThread& mainThread);

    /// To be called whenever a source has changed. What that means is told on the main thread's
    /// next turns.
    void update();

    [[nodiscard]] LockState state() const override;
    [[nodiscard]] bool isSleeping() const override { return told_ && told_->isSleeping; }
    void start() override;
    void stop() override;

  private:
    /// What was told since the start.
    struct Told {
        bool isSleeping = false;
    };

    [[nodiscard]] SessionState sessionState() const;

    const LogindWatcher& logind_;
    const ScreenSaverWatcher& savers_;
    const X11Display* display_;
    MainThread& mainThread_;
    /// As of the last update.
    SessionState truth_;
    /// Null while stopped.
    std::shared_ptr<Told> told_;
};

}  // namespace marrowby
