#pragma once

#include "UnlockCore/Foundation/Time.h"

#include <chrono>
#include <cstdint>

namespace marrowby {

/// Virtual key codes of the ANSI layout, and what else a synthetic key of macOS needs.
namespace mackey {

inline constexpr std::uint32_t command = 55;
inline constexpr std::uint32_t rightArrow = 124;
inline constexpr std::uint32_t backspace = 51;
inline constexpr std::uint32_t returnKey = 36;
inline constexpr std::uint32_t leftShift = 56;
/// Of an event that carries Unicode text.
inline constexpr std::uint32_t textCarrier = 0;

inline constexpr std::uint64_t noFlags = 0;
inline constexpr std::uint64_t commandFlag = 0x100000;

/// The state that the event source is made with, and the tap that it posts at.
inline constexpr std::int32_t hidSystemState = 1;
inline constexpr std::uint32_t hidEventTap = 0;

}  // namespace mackey

/// Keysyms of the X protocol.
namespace xkey {

inline constexpr std::uint32_t letterU = 0x0075;
inline constexpr std::uint32_t returnKey = 0xFF0D;
inline constexpr std::uint32_t escape = 0xFF1B;
inline constexpr std::uint32_t leftShift = 0xFFE1;
inline constexpr std::uint32_t leftControl = 0xFFE3;

/// Between two events. Lockers that follow the raw events need some time for each.
inline constexpr TimeInterval eventGap{0.001};
/// How long a slow reader may still look up what a lent key gives after the last press: beside
/// three busy processes a core, xscreensaver was 1.2 s late.
inline constexpr TimeInterval returningLimit{4.0};
/// How often the lock state is asked meanwhile.
inline constexpr TimeInterval returningStep{0.020};
/// For the display to tell whom a key went to.
inline constexpr std::chrono::milliseconds deliveryLimit{2000};
/// For the window of a locker that comes up.
inline constexpr TimeInterval coverLimit{1.0};
/// For the dialog of a locker that starts a program for it, to come or to go.
inline constexpr TimeInterval dialogLimit{5.0};
/// For a busy locker to begin its event loop, or to take in what it was sent; how often it is
/// asked.
inline constexpr TimeInterval busyLimit{2.0};
inline constexpr TimeInterval busyStep{0.002};
/// How often it is looked for, and how often the key for that is pressed again.
inline constexpr TimeInterval dialogStep{0.010};
inline constexpr TimeInterval dialogTapStep{0.100};

}  // namespace xkey

}  // namespace marrowby
