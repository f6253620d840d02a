// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Simulation/People/PersonPose.h"
#include "Simulation/Scenes/Movement.h"
#include "UnlockCore/Foundation/Time.h"

#include <cstdint>
#include <functional>

namespace marrowby {

/// A person's state at one moment.
struct Stance {
    /// The angles are those from the line to the camera, as FaceTruth has them.
    Placement head = {};
    Expression expression = {};
    bool isThere = true;
};

/// What a person does, by the time since the scene began. Any thread.
using Performance = std::function<Stance(TimeInterval)>;

/// How far blinking eyes are shut at this time: 0 open … 1 shut. A blink every four seconds or so
/// takes a third of one.
[[nodiscard]] float blinkAt(TimeInterval time, std::uint64_t seed);

}  // namespace marrowby
