// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Engine/UnlockMachine.h"

#include <string>
#include <vector>

namespace marrowby {

/// An overlay phase in a word or two: "closed", "failure: Not recognised".
[[nodiscard]] std::string text(const OverlayPhase& phase);

/// An effect as a test names it: "overlay closed", "startCamera 2", "log: Unlocked".
[[nodiscard]] std::string text(const UnlockMachine::Effect& effect);
[[nodiscard]] std::vector<std::string> texts(const std::vector<UnlockMachine::Effect>& effects);

/// "idle", "scanning", …
[[nodiscard]] std::string text(const UnlockMachine::Phase& phase);

}  // namespace marrowby
