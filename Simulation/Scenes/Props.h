// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Simulation/Scenes/Movement.h"
#include "Simulation/Scenes/Scene.h"

#include <cstdint>

namespace marrowby {

/// A 20 cm wide photo on matt paper with a white border.
[[nodiscard]] Prop print(std::uint64_t person, Movement moves);
/// A life-size face, cut out of thin glossy cardboard.
[[nodiscard]] Prop cutOut(std::uint64_t person, Movement moves, bool hasEyeHoles);
/// A phone of 6.1 inches and 400 pixels per inch, its light pulsing.
[[nodiscard]] Prop phone(std::uint64_t person, Movement moves);
/// A tablet of 10.2 inches and 264 pixels per inch.
[[nodiscard]] Prop tablet(std::uint64_t person, Movement moves);
/// A monitor of 27 inches and 93 pixels per inch, turned upright, with hardly an edge.
[[nodiscard]] Prop monitor(std::uint64_t person, Movement moves);

/// Bent about an upright axis: 1 / radius in metres.
[[nodiscard]] Prop bent(Prop prop, float bend);
/// In a dark wooden frame.
[[nodiscard]] Prop framed(Prop prop);
/// As a poster that nobody holds.
[[nodiscard]] Prop enlarged(Prop prop, float scale);
/// A screen that has adapted to the dark.
[[nodiscard]] Prop dimmed(Prop prop);
/// With pixels as those of an old monitor or a television.
[[nodiscard]] Prop coarse(Prop prop);
/// What the shown person does, as a photo of its beginning or all of it.
[[nodiscard]] Prop showing(Prop prop, Performance plays, bool isReplay);

}  // namespace marrowby
