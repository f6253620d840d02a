// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Platforms/macOS/Rules/LoginSession.h"
#include "Platforms/macOS/Rules/UnlockLockState.h"
#include "UnlockCore/Platform/ScreenLock.h"

namespace marrowby {

/// Reads the lock state from the login session's dictionary. The session outlives it.
class WindowServerLockState final : public LockStateReading {
  public:
    explicit WindowServerLockState(const LoginSession& session) : session_(session) {}

    [[nodiscard]] LockState state() const override {
        return UnlockLockState::of(session_.copyCurrentDictionary());
    }

  private:
    const LoginSession& session_;
};

}  // namespace marrowby
