#include "UnlockCore/Liveness/PlanarityTuning.h"

namespace marrowby {

namespace {

// Seen per pair: turning people 0.20 to 0.35, a moved picture 0.01 to 0.05 (0.11 where it hardly
// moved). A head's turn by 5 degrees leaves 0.03.
constexpr PlanarityTuning tuning{.motionGate = 0.12,
                                 .planarRatio = 0.08,
                                 .planarResidual = 0.025,
                                 .depthRatio = 0.16,
                                 .depthResidual = 0.03,
                                 .minimumPairs = 4,
                                 .minimumSpan = 0.1,
                                 .sampledFrames = 8};

}  // namespace

PlanarityTuning planarityTuning(LivenessMode /*mode*/) {
    return tuning;
}

}  // namespace marrowby
