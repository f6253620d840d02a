#pragma once

#include "Rehearsal/People/LinearImage.h"
#include "Rehearsal/People/PinholeCamera.h"
#include "Rehearsal/Scenes/Backdrop.h"
#include "Rehearsal/Scenes/SceneLight.h"

#include <cstdint>

namespace marrowby {

/// An empty room behind everything, a little out of focus, different for every seed.
[[nodiscard]] LinearImage drawRoom(int width, int height, const PinholeCamera& camera,
                                   const SceneLight& light, std::uint64_t seed, Backdrop backdrop);

/// A desk before everything, from its far edge to the picture's lower one.
void drawDesk(LinearImage& image, const PinholeCamera& camera, const SceneLight& light,
              std::uint64_t seed);

}  // namespace marrowby
