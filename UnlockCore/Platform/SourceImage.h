#pragma once

#include "UnlockCore/Foundation/Geometry.h"

namespace marrowby {

/// A camera's picture at full resolution, still in the camera's own buffer. What it is made of is
/// the platform's; only that platform's Imaging can draw it. Any thread may read it.
class SourceImage {
  public:
    virtual ~SourceImage() = default;
    /// Pixels.
    [[nodiscard]] virtual Size extent() const = 0;
};

}  // namespace marrowby
