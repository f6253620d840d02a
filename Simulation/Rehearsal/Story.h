// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Simulation/Rehearsal/Stage.h"

#include <cstddef>
#include <expected>
#include <string>
#include <string_view>
#include <vector>

namespace marrowby {

/// One act of the rehearsal. The error is the sentence about what did not happen.
struct Act {
    std::string title;
    std::expected<std::string, std::string> (*play)(Stage& stage);
};

/// The password that the first act gives the account.
inline constexpr std::string_view firstPassword = "Corr3ct-HoRse_b@ttery!";

/// The owner confirms once, as after each start; the password and the key are there afterwards.
[[nodiscard]] std::expected<void, std::string> confirmOwner(Stage& stage);

/// Of distinctPeople(): a usual face, which finds the poses fast.
inline constexpr std::size_t owner = 4;

/// The screen locks; the owner, who is before the camera, wakes the displays and is let in. The log
/// tells of this alone.
[[nodiscard]] std::expected<void, std::string> ownerUnlocks(Stage& stage);

/// The acts in order. The first sets up; each other one begins and ends set up, with the key and
/// the screen unlocked, except the last, which erases. They return their outcome.
[[nodiscard]] std::vector<Act> acts();

}  // namespace marrowby
