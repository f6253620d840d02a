// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Foundation/Time.h"

#include <algorithm>

namespace marrowby {

/// The idle time where a desktop tells only when input has paused and when it goes on. Times are
/// system uptimes.
struct IdleEdges {
    /// The pause to ask the desktop for.
    static constexpr TimeInterval pause{1.0};

    bool isActive = true;
    TimeInterval lastInput{};

    void paused(TimeInterval now) {
        isActive = false;
        lastInput = now - pause;
    }
    void resumed() { isActive = true; }

    /// Zero while input goes on: each reading is then a new input, soon after the one before.
    [[nodiscard]] TimeInterval sinceLastInput(TimeInterval now) const {
        return isActive ? TimeInterval::zero() : std::max(now - lastInput, TimeInterval::zero());
    }
};

}  // namespace marrowby
