#pragma once

#include "UnlockCore/Foundation/Time.h"

#include <chrono>
#include <cstdint>

namespace marrowby {

/// Virtual key codes of the ANSI layout; flags, source and tap of macOS key events.
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

/// The state of the event source, and the tap events are posted at.
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

/// Between two events; lockers that read raw events need it.
inline constexpr TimeInterval eventGap{0.001};
/// How long after the last press a borrowed key keeps its mapping for slow readers: with three busy
/// processes per core, xscreensaver was 1.2 s late.
inline constexpr TimeInterval returningLimit{4.0};
/// How often the lock state is polled meanwhile.
inline constexpr TimeInterval returningStep{0.020};
/// Until the display reports which client received a key.
inline constexpr std::chrono::milliseconds deliveryLimit{2000};
/// Until a starting locker's window appears.
inline constexpr TimeInterval coverLimit{1.0};
/// Until a locker's dialog program appears or ends.
inline constexpr TimeInterval dialogLimit{5.0};
/// Until a busy locker starts its event loop or processes its events, and how often it is polled.
inline constexpr TimeInterval busyLimit{2.0};
inline constexpr TimeInterval busyStep{0.002};
/// How often the dialog is polled, and how often the waking key is pressed again.
inline constexpr TimeInterval dialogStep{0.010};
inline constexpr TimeInterval dialogTapStep{0.100};

}  // namespace xkey

}  // namespace marrowby
