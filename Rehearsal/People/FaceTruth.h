#pragma once

#include "UnlockCore/Foundation/Geometry.h"

#include <array>
#include <cstdint>

namespace marrowby {

/// What is true of a drawn face. Pixels, origin at the top-left corner of the picture; may lie
/// outside of it.
struct FaceTruth {
    /// The person's seed.
    std::uint64_t person = 0;
    /// From the middle of the forehead to the chin, as face finders draw it.
    Rect box{};
    /// In the order of the WFLW collection (https://wywu.github.io/projects/LAB/WFLW.html): contour
    /// 0-32, brows 33-50, nose 51-59, eyes 60-75, lips 76-95, pupils 96 and 97; of two sides the
    /// left one of the image first.
    std::array<Point, 98> points{};
    /// Points 96 and 97: the left one of the image first.
    std::array<Point, 2> pupils{};
    /// Radians, seen along the line from the camera to the head: a face that looks into the camera
    /// from the picture's edge is not turned. Positive to the person's left.
    double yaw = 0;
    /// Negative up.
    double pitch = 0;
    /// Positive anticlockwise in the picture.
    double roll = 0;
};

}  // namespace marrowby
