#pragma once

#include "Rehearsal/People/FaceTruth.h"
#include "Rehearsal/Scenes/Scene.h"
#include "UnlockCore/Foundation/Geometry.h"
#include "UnlockCore/Foundation/Time.h"

#include <array>
#include <vector>

namespace marrowby {

/// What is true of one picture of a scene. Pixels, origin at the top-left corner.
struct SceneTruth {
    struct HeldUp {
        PropKind kind = PropKind::print;
        bool isReplay = false;
        /// Of the whole object: top-left, top-right, bottom-right, bottom-left.
        std::array<Point, 4> corners = {};
        /// The face that it shows, where it is in this picture; the angles are those of the
        /// photographed head.
        FaceTruth face = {};
    };

    TimeInterval at{};
    /// Who is really there, the farthest first.
    std::vector<FaceTruth> people = {};
    std::vector<HeldUp> heldUp = {};
};

}  // namespace marrowby
