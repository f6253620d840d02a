#pragma once

#include "UnlockCore/Liveness/CueReading.h"

#include <cstdint>

namespace marrowby {

/// What a look has gathered about one cue. `hasFired` never goes back.
struct LivenessCueState {
    CueReading reading;
    std::int64_t framesCounted = 0;
    bool hasFired = false;

    friend bool operator==(const LivenessCueState&, const LivenessCueState&) = default;
};

}  // namespace marrowby
