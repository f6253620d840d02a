// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Simulation/People/PeopleRenderer.h"

#include <string_view>

namespace marrowby {

enum class LightKind { normal, dark, backlit, oneSided, flicker };

[[nodiscard]] std::string_view name(LightKind kind);

/// The light of a whole room. Its units are the image's: white paper in normal light has about 1.
struct SceneLight {
    Lighting people;
    /// On the room behind.
    float room = 0.6F;
    /// How bright the window behind is; 0 is none.
    float windowBehind = 0;
    /// What a mirror shows where it reflects the key light, and half of how wide that looks, in
    /// radians. To give the key's 0.7 from there, a window must be about as bright as this.
    float source = 30;
    float sourceRadius = 0.10F;
    /// Lamps on alternating current: the part of the light that comes and goes, and how often.
    float flickerDepth = 0;
    float flickerRate = 100;
};

[[nodiscard]] SceneLight light(LightKind kind);

}  // namespace marrowby
