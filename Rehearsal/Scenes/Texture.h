#pragma once

#include "Rehearsal/People/LinearImage.h"

#include <cstddef>
#include <vector>

namespace marrowby {

/// A picture to be put on something, in ever smaller versions so that it can be looked at from afar
/// without flicker. Its coverage says where it is not cut away. Immutable.
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
    /// How fine it must be for an eye that sees `footprint` of its pixels at once.
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
