// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Simulation/People/PeopleRenderer.h"
#include "Simulation/Scenes/Cast.h"
#include "Simulation/Scenes/Chance.h"
#include "Simulation/Scenes/SceneLight.h"
#include "Simulation/Scenes/Sensor.h"
#include "Simulation/Training/Records.h"

#include <cstdint>
#include <functional>
#include <vector>

namespace marrowby {

/// Draws training pictures: faces as a camera shows them, in all poses, lights and sizes, and
/// scenes, of which every second one is an attack. The same seed gives the same pictures in the
/// same build. One thread at a time.
class PictureMaker {
  public:
    explicit PictureMaker(std::uint64_t seed);

    /// `label` goes into the record.
    [[nodiscard]] records::Face face(std::uint64_t person, float label);
    /// Moments of one scene, in `take` one by one; the first before the exposure has settled.
    void scene(std::uint64_t person, std::uint64_t other, int moments,
               const std::function<void(const records::Scene&)>& take);

  private:
    struct Room {
        LightKind light;
        LinearImage picture;
    };

    Chance chance_;
    Cast cast_;
    PeopleRenderer renderer_;
    Sensor sensor_;
    std::vector<Room> rooms_;
};

}  // namespace marrowby
