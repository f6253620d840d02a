#pragma once

#include "Rehearsal/People/Expression.h"
#include "Rehearsal/Scenes/Placement.h"
#include "UnlockCore/Foundation/Time.h"

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

}  // namespace marrowby
