// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Platform/KeyEvents.h"

#include <cstdint>

namespace marrowby {

/// Virtual key codes of the ANSI layout; flags, source and tap of the Mac's key events.
namespace mackey {

inline constexpr std::uint16_t returnKey = 36;
inline constexpr std::uint16_t backspace = 51;
inline constexpr std::uint16_t command = 55;
inline constexpr std::uint16_t leftShift = 56;
inline constexpr std::uint16_t leftControl = 59;
inline constexpr std::uint16_t letterU = 32;
inline constexpr std::uint16_t rightArrow = 124;
/// Of an event that carries Unicode text.
inline constexpr std::uint16_t textCarrier = 0;

inline constexpr std::uint64_t noFlags = 0;
inline constexpr std::uint64_t commandFlag = 0x100000;

/// The state of the event source, and the tap events are posted at.
inline constexpr std::int32_t hidSystemState = 1;
inline constexpr std::uint32_t hidEventTap = 0;

[[nodiscard]] constexpr std::uint16_t code(EditingKey key) {
    switch (key) {
        case EditingKey::shift:
            return leftShift;
        case EditingKey::control:
            return leftControl;
        case EditingKey::command:
            return command;
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

[[nodiscard]] constexpr std::uint64_t flags(const KeyPress& press) {
    return press.withCommand ? commandFlag : noFlags;
}

}  // namespace mackey

/// The login window's field. It gets no waking key: lost first keys were never observed.
inline constexpr KeyPace loginWindowPace{
    .tapsFirst = false, .wake = {}, .shortcut = TimeInterval(0.012)};

}  // namespace marrowby
