#include "UnlockCore/Liveness/PlanarityTuning.h"

namespace marrowby {

namespace {

// Seen in rendered scenes, per pair that moved by over a quarter: people who turn 0.04 to 0.12
// (0.25 to 0.30 where the neck hardly moves with the head), pictures that are moved or turned 0.002
// to 0.03, bent ones 0.04 to 0.05 with a residual of 0.02 to 0.03. With less motion than that, the
// landmarks' own noise of 0.005 to 0.01 hides the nose. Cut-out faces that are turned are bent
// enough to leave up to 0.042 of depth; moved ones leave 0.006 to 0.018.
//
// A planar reading counts at a level of 0.85, that is up to 0.65 of the planar ratio: 0.012. At
// 0.0195 it fired in 9 of 135 looks of real people, who sway or lift a bowed head, at 0.012 in 2;
// of 162 real prints it then told 114 instead of 131, all of which the network denied as well. In
// 88 looks of drawn people it fired in 2 and 3 at 0.0195, with either pack, and in 1 and 0 at
// 0.012, and the 50 attacks ended alike.
constexpr PlanarityTuning tuning{.motionGate = 0.25,
                                 .planarRatio = 0.0185,
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
