// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Platforms/Linux/Session/LogindWatcher.h"
#include "Platforms/Linux/Session/ScreenSaverWatcher.h"
#include "Platforms/Linux/Session/SessionState.h"
#include "Platforms/Linux/X11/X11Display.h"
#include "UnlockCore/Platform/MainThread.h"
#include "UnlockCore/Platform/ScreenLock.h"

#include <atomic>
#include <memory>

namespace marrowby {

/// Lock and sleep state of the user's session, from all sources, which must outlive it. Main
/// thread, except state().
class LinuxLockMonitor final : public LockEventWatching, public LockStateReading {
  public:
    /// `display` reports lockers by their windows; null where no X server sees them.
    LinuxLockMonitor(const LogindWatcher& logind, const ScreenSaverWatcher& savers,
                     const X11Display* display, MainThread& mainThread);

    /// Call after each change of a source. Events follow on later turns of the main thread.
    void update();
    /// The displays without an X server, as the desktop tells.
    void noteDisplays(bool areAsleep);

    [[nodiscard]] LockState state() const override;
    [[nodiscard]] bool isSleeping() const override { return run_ && run_->isSleeping; }
    [[nodiscard]] SessionLocker locker() const override;
    [[nodiscard]] Phrase problem() const override;
    void start() override;
    void stop() override;

  private:
    /// State since start().
    struct Run {
        bool isSleeping = false;
    };

    [[nodiscard]] SessionState sessionState() const;

    const LogindWatcher& logind_;
    const ScreenSaverWatcher& savers_;
    const X11Display* display_;
    MainThread& mainThread_;
    std::atomic<bool> areDesktopDisplaysAsleep_ = false;
    /// As of the last update().
    SessionState session_;
    /// Null while stopped; queued events hold it weakly.
    std::shared_ptr<Run> run_;
};

}  // namespace marrowby
