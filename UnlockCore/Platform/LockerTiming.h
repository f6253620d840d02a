// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Foundation/Time.h"

#include <chrono>
#include <cstddef>

namespace marrowby {

/// Waits of typing into an X11 locker, and how often it is tapped.
namespace lockertiming {

/// After each key that is no character.
inline constexpr TimeInterval eventGap{0.001};
/// How long after the last press a borrowed key keeps its mapping for slow readers: with three busy
/// processes per core, xscreensaver was 1.2 s late.
inline constexpr TimeInterval returningLimit{4.0};
/// The same while a dialog is seen not to have handled all keys: at a load of 30 on two cores
/// xscreensaver's was more than 4 s late.
inline constexpr TimeInterval handlingLimit{30.0};
/// How often the lock state is polled meanwhile.
inline constexpr TimeInterval returningStep{0.020};
/// Until the display reports which client received a key.
inline constexpr std::chrono::milliseconds deliveryLimit{2000};
/// Until a starting locker's window appears.
inline constexpr TimeInterval coverLimit{1.0};
/// Until a locker's dialog program takes keys.
inline constexpr TimeInterval dialogLimit{5.0};
/// Until a busy locker starts its event loop or processes its events, and how often it is polled.
inline constexpr TimeInterval busyLimit{2.0};
inline constexpr TimeInterval busyStep{0.002};
/// How often the dialog is polled, and how often the waking key is pressed again.
inline constexpr TimeInterval dialogStep{0.010};
inline constexpr TimeInterval dialogTapStep{0.100};
/// Taps that a dialog with raw keys handles before it is trusted: the first dismisses a page that
/// says that a password was wrong, and the dialog with it.
inline constexpr std::size_t tapsOfDialog = 2;

}  // namespace lockertiming

}  // namespace marrowby
