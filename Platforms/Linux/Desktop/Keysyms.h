// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Platform/KeyEvents.h"

#include <cstdint>

namespace marrowby::xkey {

// Keysyms of the X protocol, which XKB layouts use with and without X.

/// No key has it by itself; Xlib gives the character of the same number, which is Control-U.
inline constexpr std::uint32_t eraseLine = 0x0015;
inline constexpr std::uint32_t letterU = 0x0075;
inline constexpr std::uint32_t backspace = 0xFF08;
inline constexpr std::uint32_t returnKey = 0xFF0D;
inline constexpr std::uint32_t rightArrow = 0xFF53;
inline constexpr std::uint32_t leftShift = 0xFFE1;
inline constexpr std::uint32_t leftControl = 0xFFE3;
inline constexpr std::uint32_t leftSuper = 0xFFEB;

[[nodiscard]] constexpr std::uint32_t keysym(EditingKey key) {
    switch (key) {
        case EditingKey::shift:
            return leftShift;
        case EditingKey::control:
            return leftControl;
        case EditingKey::command:
            return leftSuper;
        case EditingKey::letterU:
            return letterU;
        case EditingKey::rightArrow:
            return rightArrow;
        case EditingKey::backspace:
            return backspace;
        case EditingKey::enter:
            break;
    }
    return returnKey;
}

}  // namespace marrowby::xkey
