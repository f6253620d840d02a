// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Simulation/Scenes/Movement.h"
#include "Simulation/Scenes/Sheet.h"
#include "Simulation/Scenes/Texture.h"

#include <cstdint>
#include <vector>

namespace marrowby {

/// The visible parts of hands that hold a sheet: round-ended strips of shaded skin.
struct HandPart {
    Sheet sheet = {};
    Placement place = {};
};

/// A forearm behind a sheet that one hand holds, or both behind one that is wider than a hand.
[[nodiscard]] std::vector<HandPart> armsBehind(const PlacedSheet& placed, const Placement& place);
/// Thumbs before it, and the tips of the fingers of one hand.
[[nodiscard]] std::vector<HandPart> fingersBefore(const PlacedSheet& placed,
                                                  const Placement& place);
/// The skin of one person.
[[nodiscard]] Texture skin(std::uint64_t seed);

}  // namespace marrowby
