#pragma once

#include "Rehearsal/Scenes/Scene.h"

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace marrowby {

/// Scenes of one person: living, in all lights and movements, and shown by everything that shows
/// faces. All are made of the same few lines; each has a name of its own.
[[nodiscard]] std::vector<Scene> sceneCatalogue(std::uint64_t person);
/// One of them.
[[nodiscard]] std::optional<Scene> sceneNamed(std::string_view name, std::uint64_t person);

}  // namespace marrowby
