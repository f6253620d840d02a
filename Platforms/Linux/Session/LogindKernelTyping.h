// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <memory>
#include <string>

namespace marrowby {

/// A snapshot of the session that reads the kernel's keyboards.
struct KernelTypingFacts {
    enum class Kind { x11, wayland, other };

    /// logind's properties of this process's session; false when unknown.
    bool isLocked = false;
    bool isActive = false;
    std::uint32_t owner = 0;
    Kind kind = Kind::other;
    /// At the session's display or at this process's.
    bool hasXServer = false;
};

/// Whether typed keys reach the lock screen of `user`: the session is that user's, active and
/// locked, and no X server reads the keyboard. With an X server the locker is identified through it
/// (XTestKeyEvents); a Wayland session's X server only gets its compositor's input.
[[nodiscard]] constexpr bool mayTypeThroughKernel(const KernelTypingFacts& facts,
                                                  std::uint32_t user) {
    using enum KernelTypingFacts::Kind;
    return facts.isLocked && facts.isActive && facts.owner == user && facts.kind != x11 &&
           (facts.kind == wayland || !facts.hasXServer);
}

/// Asks logind, anew on each call, whether kernel key events reach the lock screen of this
/// process's session. No answer within a second counts as not locked. Any thread; blocks.
class LogindKernelTyping {
  public:
    /// `display` is this process's; empty without one.
    LogindKernelTyping(std::string systemBus, std::string display);
    ~LogindKernelTyping();
    LogindKernelTyping(const LogindKernelTyping&) = delete;
    LogindKernelTyping& operator=(const LogindKernelTyping&) = delete;

    [[nodiscard]] bool mayType() const;

  private:
    class Bus;

    const std::string display_;
    const std::unique_ptr<Bus> bus_;
};

}  // namespace marrowby
