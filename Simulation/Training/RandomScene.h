// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Simulation/Scenes/Chance.h"
#include "Simulation/Scenes/Scene.h"

#include <array>
#include <cstdint>

namespace marrowby {

/// A random scene: nobody, one or two living people, or something held up, with this person in the
/// main part and the other one beside or behind.
[[nodiscard]] Scene randomScene(std::uint64_t person, std::uint64_t other, Chance& chance);

/// Light on people, about that of a kind of room.
[[nodiscard]] Lighting randomLighting(LightKind kind, Chance& chance);
[[nodiscard]] LightKind randomLight(Chance& chance);
/// Furniture beside the head, or more often straight edges behind it.
[[nodiscard]] Backdrop randomBackdrop(Chance& chance);

}  // namespace marrowby
