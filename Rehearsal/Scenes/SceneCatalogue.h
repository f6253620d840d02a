#pragma once

#include "Rehearsal/Scenes/Scene.h"

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace marrowby {

/// Scenes of one person: living, in all lights and movements, and shown by everything that shows
/// faces. All are made of the same few lines; each has a name of its own. Another take is the same
/// once more, somewhat nearer or farther, by other hands, on another sensor.
[[nodiscard]] std::vector<Scene> sceneCatalogue(std::uint64_t person, std::uint64_t take = 0);
/// One of them.
[[nodiscard]] std::optional<Scene> sceneNamed(std::string_view name, std::uint64_t person,
                                              std::uint64_t take = 0);

}  // namespace marrowby
