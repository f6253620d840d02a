// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Simulation/People/LinearImage.h"

#include <cstddef>
#include <vector>

namespace marrowby {

/// A picture to be put on something, with smaller versions (mipmaps) against aliasing. Its coverage
/// says where it is not cut away. Immutable.
class Texture {
  public:
    /// Red, green, blue and coverage.
    struct Sample {
        Vector3 colour = {};
        float coverage = 0;
    };

    explicit Texture(LinearImage image);

    [[nodiscard]] int width() const { return levels_.front().width; }
    [[nodiscard]] int height() const { return levels_.front().height; }
    /// The level of detail for a pixel that covers `footprint` of the texture's pixels.
    struct Detail {
        std::size_t level = 0;
        /// 0…1: of the next coarser one.
        float rest = 0;
    };
    [[nodiscard]] Detail detail(float footprint) const;
    /// Around this place in pixels of the picture.
    [[nodiscard]] Sample at(float x, float y, const Detail& detail) const;

  private:
    std::vector<LinearImage> levels_;
};

}  // namespace marrowby
