// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Engine/LogLine.h"
#include "UnlockCore/Platform/DesktopNotices.h"
#include "UnlockCore/Platform/SessionUnlocking.h"

#include <string>
#include <variant>

namespace marrowby {

/// After an unlock that the desktop was asked for, tells once who was seen, and offers to lock
/// again. Main thread; the notices and the session outlive it.
class UnlockNotice {
  public:
    UnlockNotice(DesktopNotices& notices, SessionUnlocking& session);
    /// Withdraws the notice.
    ~UnlockNotice();
    UnlockNotice(const UnlockNotice&) = delete;
    UnlockNotice& operator=(const UnlockNotice&) = delete;

    /// Each line of the engine's log.
    void note(const LogLine& line);
    /// After each change of the lock: nothing is shown on a locked screen.
    void update(bool isScreenLocked);

  private:
    struct Waiting {};
    struct Seen {
        std::string name;
        bool hasUnlocked = false;
    };
    struct Shown {};

    void press();

    DesktopNotices& notices_;
    SessionUnlocking& session_;
    std::variant<Waiting, Seen, Shown> state_;
};

}  // namespace marrowby
