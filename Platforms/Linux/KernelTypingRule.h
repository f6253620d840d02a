#pragma once

#include <cstdint>

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

}  // namespace marrowby
