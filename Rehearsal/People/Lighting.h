#pragma once

#include "Rehearsal/People/Vector3.h"

namespace marrowby {

/// The light on a scene, in the image's units: a white surface that faces a key light of strength
/// 0.8 with an ambient of 0.2 is at full scale. Axes of the picture: x right, y down, z away from
/// the camera.
struct Lighting {
    /// From the person towards the light; any length but 0.
    Vector3 keyDirection{.x = -0.4F, .y = -0.6F, .z = -0.9F};
    float keyStrength = 0.8F;
    Vector3 keyColour{.x = 1, .y = 0.97F, .z = 0.92F};
    /// From all around, a little more from above.
    Vector3 ambient{.x = 0.21F, .y = 0.22F, .z = 0.24F};
    /// From behind and above; draws a rim along the outline.
    float backlight = 0;
    Vector3 backlightColour{.x = 1, .y = 1, .z = 1};
};

}  // namespace marrowby
