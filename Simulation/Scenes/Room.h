// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Simulation/People/LinearImage.h"
#include "Simulation/People/PeopleRenderer.h"
#include "Simulation/Scenes/SceneLight.h"

#include <cstdint>
#include <string_view>

namespace marrowby {

/// The room behind a person: furniture beside the head, or straight edges behind and across it,
/// where a held-up device would have them.
enum class Backdrop { furniture, curtain, window, door, shelf, picture, monitor, desk };

[[nodiscard]] std::string_view name(Backdrop backdrop);

/// An empty room, a little out of focus, different for every seed.
[[nodiscard]] LinearImage drawRoom(int width, int height, const PinholeCamera& camera,
                                   const SceneLight& light, std::uint64_t seed, Backdrop backdrop);

/// A desk before everything, from its far edge to the picture's lower one.
void drawDesk(LinearImage& image, const PinholeCamera& camera, const SceneLight& light,
              std::uint64_t seed);

}  // namespace marrowby
