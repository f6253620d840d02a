#pragma once

#include "Simulation/Measuring/Look.h"
#include "UnlockCore/Foundation/Time.h"

#include <cstddef>
#include <string>
#include <vector>

namespace marrowby {

/// Which looks of the rehearsal's scenes.
struct SceneLooks {
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

/// A camera that starts at some moment of the scene. A look's pictures must be read in their order,
/// one look after the other.
[[nodiscard]] std::vector<Look> looksOf(const SceneLooks& wanted);

}  // namespace marrowby
