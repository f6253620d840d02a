#pragma once

#include "UnlockCore/Foundation/Mutex.h"
#include "UnlockCore/Platform/LockStateReading.h"

namespace marrowby {

/// A session on the console, unlocked until told otherwise.
class FakeLockState final : public LockStateReading {
  public:
    [[nodiscard]] LockState state() const override {
        const MutexLock lock(mutex_);
        return state_;
    }
    void set(LockState state) {
        const MutexLock lock(mutex_);
        state_ = state;
    }
    void setLocked(bool isLocked) { set({.isScreenLocked = isLocked, .isOnConsole = true}); }

  private:
    mutable Mutex mutex_;
    LockState state_ GUARDED_BY(mutex_) = {.isScreenLocked = false, .isOnConsole = true};
};

}  // namespace marrowby
