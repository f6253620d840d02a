#pragma once

#include "UnlockCore/Liveness/LivenessCue.h"
#include "UnlockCore/Liveness/LivenessCueState.h"
#include "UnlockCore/Liveness/LivenessDecision.h"
#include "UnlockCore/Liveness/LivenessMode.h"
#include "UnlockCore/Liveness/RealFaceAverage.h"

#include <cstdint>
#include <map>

namespace marrowby {

/// A look's liveness after one frame. Any thread.
struct LivenessSnapshot {
    LivenessDecision decision;
    LivenessMode mode = LivenessMode::standard;
    std::map<LivenessCue, LivenessCueState> cueStates;
    RealFaceAverage realFace;
    std::int64_t frameCount = 0;

    friend bool operator==(const LivenessSnapshot&, const LivenessSnapshot&) = default;
};

}  // namespace marrowby
