#pragma once

#include <cstdint>
#include <memory>
#include <string>

namespace marrowby {

/// What is known, at one moment, of the session that reads a keyboard in the kernel.
struct KernelTypingFacts {
    enum class Kind { x11, wayland, other };

    /// What logind says of the session that this process belongs to; false where it says nothing.
    bool isLocked = false;
    bool isActive = false;
    std::uint32_t owner = 0;
    Kind kind = Kind::other;
    /// At the session's display or this process's.
    bool hasXServer = false;
};

/// Whether a key typed there now is for the lock screen of the user `user`: the session is that
/// user's, has the screen and is locked, and no X server reads the keyboard, for whose lockers
/// there are better questions. The X server of a Wayland session reads what its compositor gives
/// it.
[[nodiscard]] constexpr bool mayTypeThroughKernel(const KernelTypingFacts& facts,
                                                  std::uint32_t user) {
    using enum KernelTypingFacts::Kind;
    return facts.isLocked && facts.isActive && facts.owner == user && facts.kind != x11 &&
           (facts.kind == wayland || !facts.hasXServer);
}

/// Asks logind, anew each time, whether keys typed through the kernel are for the lock screen of
/// this process's session: the one that logind itself knows it by. Nobody who doesn't answer within
/// a second has locked anything. Any thread; blocks.
class LogindKernelTyping {
  public:
    /// `display` is this process's; empty where there is none.
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
