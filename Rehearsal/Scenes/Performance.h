#pragma once

#include "Rehearsal/People/PersonPose.h"
#include "Rehearsal/Scenes/Movement.h"
#include "UnlockCore/Foundation/Time.h"

#include <cstdint>
#include <functional>

namespace marrowby {

/// How somebody is at one moment.
struct Stance {
    /// The angles are those from the line to the camera, as FaceTruth has them.
    Placement head = {};
    Expression expression = {};
    bool isThere = true;
};

/// What somebody does, by the time since the scene began. Any thread.
using Performance = std::function<Stance(TimeInterval)>;

/// How far the eyes of somebody who blinks now and then are shut: 0 open … 1 shut. Once in about
/// four seconds, for a third of one.
[[nodiscard]] float blinkAt(TimeInterval time, std::uint64_t seed);

}  // namespace marrowby
