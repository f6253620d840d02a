// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Simulation/Measuring/Take.h"
#include "UnlockCore/Foundation/Time.h"

#include <cstddef>
#include <string>
#include <vector>

namespace marrowby {

/// Which takes of the rehearsal's scenes.
struct SceneTakes {
    /// Beginnings of scenes' names; scenes without a face are left out.
    std::vector<std::string> scenes;
    /// Takes of each scene, with other people, and the first one's number.
    std::size_t count = 1;
    std::size_t first = 1;
    TimeInterval lasts{5};
    double framesPerSecond = 30;
    int width = 1280;
    int height = 720;
};

/// A camera that starts at some moment of the scene. A take's pictures must be read in their order,
/// one take after the other.
[[nodiscard]] std::vector<Take> takesOf(const SceneTakes& wanted);

}  // namespace marrowby
