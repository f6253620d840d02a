#pragma once

#include "UnlockCore/Platform/LockEventWatching.h"

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

    [[nodiscard]] bool isSleeping() const override { return isSleeping_; }
    void start() override { isStarted_ = true; }
    void stop() override { isStarted_ = false; }

  private:
    bool isStarted_ = false;
    bool isSleeping_ = false;
};

}  // namespace marrowby
