// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Platforms/Linux/Camera/PixelBuffer.h"
#include "Simulation/Scenes/SceneFilm.h"

#include <memory>
#include <vector>

namespace marrowby {

/// The first seconds of a scene, drawn beforehand for cameras that a film cannot keep up with.
/// Any thread.
class FilmReel {
  public:
    static constexpr TimeInterval length{2};

    /// Draws it, which takes seconds.
    FilmReel(SceneFilm film, TimeInterval frameTime, int width, int height);

    /// The picture of that moment after the camera's first one: forwards, then backwards.
    [[nodiscard]] std::shared_ptr<const PixelBuffer> at(TimeInterval running) const;

  private:
    TimeInterval frameTime_;
    /// At least two.
    std::vector<std::shared_ptr<const PixelBuffer>> pictures_;
};

}  // namespace marrowby
