#pragma once

#include "Platforms/Linux/X11/XTestKeyEvents.h"
#include "Rehearsal/ChildProcess.h"
#include "UnlockCore/PasswordEntry/KeystrokeError.h"

#include <atomic>
#include <chrono>
#include <expected>
#include <functional>
#include <string>
#include <thread>
#include <vector>

namespace marrowby {

/// The product's typing on a thread of its own, told all the while that the screen is locked, as by
/// a session that only says so.
class GuardedTyping {
  public:
    using Outcome = std::expected<void, KeystrokeError>;

    /// Begins to type. `isLocked` is asked after the last key, for how long lent keys are needed;
    /// nothing: no longer. The key events outlive this.
    GuardedTyping(KeyEvents& keyEvents, std::string password,
                  std::function<bool()> isLocked = nullptr);
    /// Waits for its end.
    ~GuardedTyping();
    GuardedTyping(const GuardedTyping&) = delete;
    GuardedTyping& operator=(const GuardedTyping&) = delete;

    /// Becomes readable at the end.
    [[nodiscard]] int endDescriptor() const { return end_.reading.get(); }
    [[nodiscard]] bool hasEnded() const { return hasEnded_; }
    /// Waits for the end, with the keyboard given back.
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
