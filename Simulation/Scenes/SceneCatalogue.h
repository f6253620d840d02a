// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Simulation/Scenes/Scene.h"

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace marrowby {

/// Scenes of one person: living, in all lights and movements, and shown by everything that shows
/// faces. Names are unique. Another take varies distance, hands and sensor.
[[nodiscard]] std::vector<Scene> sceneCatalogue(std::uint64_t person, std::uint64_t take = 0);
/// The scene of that name.
[[nodiscard]] std::optional<Scene> sceneNamed(std::string_view name, std::uint64_t person,
                                              std::uint64_t take = 0);

}  // namespace marrowby
