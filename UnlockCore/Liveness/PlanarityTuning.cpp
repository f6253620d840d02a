#include "UnlockCore/Liveness/PlanarityTuning.h"

namespace marrowby {

namespace {

// Seen in rendered scenes, per pair that moved by over a quarter: people who turn 0.04 to 0.12
// (0.25 to 0.30 where the neck hardly moves with the head), pictures that are moved or turned 0.002
// to 0.03, bent ones 0.04 to 0.05 with a residual of 0.02 to 0.03. With less motion than that, the
// landmarks' own noise of 0.005 to 0.01 hides the nose. Cut-out faces that are turned are bent
// enough to leave up to 0.042 of depth; moved ones leave 0.006 to 0.018.
constexpr PlanarityTuning tuning{.motionGate = 0.25,
                                 .planarRatio = 0.03,
                                 .planarResidual = 0.02,
                                 .depthRatio = 0.06,
                                 .depthResidual = 0.045,
                                 .minimumPairs = 4,
                                 .minimumSpan = 0.1,
                                 .sampledFrames = 8};

}  // namespace

PlanarityTuning planarityTuning(LivenessMode /*mode*/) {
    return tuning;
}

}  // namespace marrowby
