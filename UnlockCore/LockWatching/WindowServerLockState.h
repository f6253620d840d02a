#pragma once

#include "UnlockCore/LockWatching/LockStateReading.h"
#include "UnlockCore/Platform/LoginSession.h"

namespace marrowby {

/// Reads the lock from the login session, afresh each time. Any thread. The session outlives it.
class WindowServerLockState final : public LockStateReading {
  public:
    explicit WindowServerLockState(const LoginSession& session) : session_(session) {}

    [[nodiscard]] bool isLocked() const override;

  private:
    const LoginSession& session_;
};

}  // namespace marrowby
