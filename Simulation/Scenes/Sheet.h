// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Simulation/People/PeopleRenderer.h"
#include "Simulation/Scenes/Movement.h"
#include "UnlockCore/Foundation/Geometry.h"

#include <array>
#include <optional>

namespace marrowby {

/// What makes a sheet a screen.
struct Display {
    /// Metres from one pixel to the next; each is a red, a green and a blue upright bar.
    float pixelPitch = 0.00027F;
    /// How bright its white is, in the scene's units.
    float white = 0.7F;
    /// The part of its light that comes and goes, and how often.
    float pulseDepth = 0;
    float pulseRate = 240;
};

/// Something thin that shows a picture: paper, cardboard or a screen. Metres.
struct Sheet {
    struct Border {
        float side = 0;
        float top = 0;
        float bottom = 0;
    };

    float width = 0.10F;
    float height = 0.15F;
    float cornerRadius = 0;
    /// The part of it around the picture.
    Border border = {};
    Vector3 borderColour{.x = 0.85F, .y = 0.85F, .z = 0.85F};
    /// 1 / radius of the cylinder about an upright axis that it is bent to; its sides turn away
    /// from the viewer, or towards him where this is negative.
    float bend = 0;
    /// The part of the light that it mirrors, and how far it scatters that, in radians.
    float gloss = 0.008F;
    float roughness = 0.15F;
    std::optional<Display> display = std::nullopt;
};

/// A sheet at its place.
class PlacedSheet {
  public:
    /// A place on it, in metres from its middle to the right and down, and the direction it faces
    /// there.
    struct Hit {
        float u = 0;
        float v = 0;
        Vector3 normal;
    };

    PlacedSheet(const Sheet& sheet, const Placement& placement);

    [[nodiscard]] const Sheet& sheet() const { return sheet_; }
    /// Where the line from the camera in this direction meets the sheet or what would continue it.
    [[nodiscard]] std::optional<Hit> hit(const Vector3& direction) const;
    /// A place on it, in metres from the camera.
    [[nodiscard]] Vector3 at(float u, float v) const;
    /// Where that is in the picture.
    [[nodiscard]] Point project(const PinholeCamera& camera, float u, float v) const;
    /// The sheet's own corners in the picture: top-left, top-right, bottom-right, bottom-left.
    [[nodiscard]] std::array<Point, 4> corners(const PinholeCamera& camera) const;

  private:
    const Sheet& sheet_;
    Vector3 middle_;
    std::array<Vector3, 3> axes_;
};

}  // namespace marrowby
