// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Foundation/Mutex.h"
#include "UnlockCore/Platform/ScreenLock.h"

namespace marrowby {

/// Lock events that the test makes up, told at once.
class FakeLockEvents final : public LockEventWatching {
  public:
    void send(LockEvent event) {
        if (!isStarted_) return;
        if (event == LockEvent::willSleep) isSleeping_ = true;
        if (event == LockEvent::wake) isSleeping_ = false;
        if (const auto report = onEvent) report(event);
    }

    Phrase fault;

    [[nodiscard]] bool isSleeping() const override { return isSleeping_; }
    [[nodiscard]] Phrase problem() const override { return fault; }
    void start() override { isStarted_ = true; }
    void stop() override { isStarted_ = false; }

  private:
    bool isStarted_ = false;
    bool isSleeping_ = false;
};

/// A session on the console, unlocked until told otherwise.
class FakeLockState final : public LockStateReading {
  public:
    [[nodiscard]] LockState state() const override {
        const MutexLock lock(mutex_);
        ++reads_;
        return state_;
    }
    /// How often it was asked.
    [[nodiscard]] int reads() const {
        const MutexLock lock(mutex_);
        return reads_;
    }
    void set(LockState state) {
        const MutexLock lock(mutex_);
        state_ = state;
    }
    void setLocked(bool isLocked) { set({.isScreenLocked = isLocked, .isOnConsole = true}); }

  private:
    mutable Mutex mutex_;
    mutable int reads_ GUARDED_BY(mutex_) = 0;
    LockState state_ GUARDED_BY(mutex_) = {.isScreenLocked = false, .isOnConsole = true};
};

}  // namespace marrowby
