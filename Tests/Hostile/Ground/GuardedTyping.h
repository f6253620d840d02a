// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Platforms/Linux/X11/XTestKeyEvents.h"
#include "Simulation/Desktop/ChildProcess.h"
#include "UnlockCore/PasswordEntry/KeystrokeInjector.h"

#include <atomic>
#include <chrono>
#include <expected>
#include <functional>
#include <string>
#include <thread>
#include <vector>

namespace marrowby {

/// Runs the product's typing on its own thread, with a session that always reports the lock.
class GuardedTyping {
  public:
    using Outcome = std::expected<void, KeystrokeError>;

    /// Starts typing. `isLocked` is polled after the last key while lent keys are needed; null
    /// means they are returned at once. The key events outlive this.
    GuardedTyping(KeyEvents& keyEvents, std::string password,
                  std::function<bool()> isLocked = nullptr);
    ~GuardedTyping();
    GuardedTyping(const GuardedTyping&) = delete;
    GuardedTyping& operator=(const GuardedTyping&) = delete;

    /// Becomes readable when the typing ends.
    [[nodiscard]] int endDescriptor() const { return end_.reading.get(); }
    [[nodiscard]] bool hasEnded() const { return hasEnded_; }
    /// Waits until the typing has ended and returned the lent keys.
    [[nodiscard]] Outcome outcome();

  private:
    void type(KeyEvents& keyEvents, const std::string& password);

    const std::function<bool()> isLocked_;
    Pipe end_;
    std::atomic<bool> hasEnded_ = false;
    Outcome outcome_;
    std::thread thread_;
};

}  // namespace marrowby
