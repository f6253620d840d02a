#pragma once

#include "Rehearsal/People/LinearImage.h"
#include "Rehearsal/People/PinholeCamera.h"
#include "Rehearsal/Scenes/SceneLight.h"

#include <cstdint>

namespace marrowby {

/// An empty room behind everything, a little out of focus: a wall, a door, a poster and a
/// bookshelf, different for every seed.
[[nodiscard]] LinearImage drawRoom(int width, int height, const PinholeCamera& camera,
                                   const SceneLight& light, std::uint64_t seed);

}  // namespace marrowby
