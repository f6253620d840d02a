#pragma once

#include "Platforms/Linux/LinuxLoginSession.h"
#include "Platforms/Linux/SessionTruth.h"
#include "UnlockCore/Platform/NotificationCenter.h"

namespace marrowby {

/// Posts the notifications of lock, screen saver and sleep. Main thread. What it is given outlives
/// it.
class SessionAnnouncer {
  public:
    SessionAnnouncer(const LinuxLoginSession& session, NotificationCenter& workspaceCenter,
                     NotificationCenter& distributedCenter)
        : session_(session),
          workspaceCenter_(workspaceCenter),
          distributedCenter_(distributedCenter) {}

    /// To be called at the start and whenever a source of the session has changed.
    void update();

  private:
    const LinuxLoginSession& session_;
    NotificationCenter& workspaceCenter_;
    NotificationCenter& distributedCenter_;
    /// As announced so far.
    SessionTruth truth_;
};

}  // namespace marrowby
