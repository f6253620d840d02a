// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Simulation/People/LinearImage.h"
#include "Simulation/People/Person.h"
#include "Simulation/People/PersonPose.h"
#include "Simulation/People/Vector3.h"
#include "UnlockCore/Foundation/Geometry.h"

#include <array>
#include <cstdint>
#include <memory>

namespace marrowby {

/// A camera without a lens. Pixels; the centre of the picture's first pixel is at (0.5, 0.5).
struct PinholeCamera {
    double focalLength = 0;
    double centreX = 0;
    double centreY = 0;

    /// A usual webcam: about 68° across, the axis through the picture's middle.
    [[nodiscard]] static PinholeCamera webcam(int width, int height) {
        return {.focalLength = 0.74 * (width > height ? width : height),
                .centreX = width / 2.0,
                .centreY = height / 2.0};
    }
};

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

/// Ground truth of a drawn face. Pixels, origin at the top-left corner of the picture; may lie
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

/// Draws people into pictures. The same input gives the same bytes in the same build. One thread at
/// a time.
class PeopleRenderer {
  public:
    PeopleRenderer();
    PeopleRenderer(PeopleRenderer&&) noexcept;
    PeopleRenderer& operator=(PeopleRenderer&&) noexcept;
    ~PeopleRenderer();

    /// Over what the image shows: of two people draw the farther one first. Edges are smooth. Parts
    /// nearer than 5 cm to the camera are left out.
    FaceTruth draw(LinearImage& image, const PinholeCamera& camera, const Person& person,
                   const PersonPose& pose, const Expression& expression = {},
                   const Lighting& lighting = {});

  private:
    struct Buffers;
    std::unique_ptr<Buffers> buffers_;
};

}  // namespace marrowby
