// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Simulation/People/LinearImage.h"
#include "Simulation/Scenes/Optics.h"
#include "Simulation/Scenes/SceneLight.h"
#include "Simulation/Scenes/Sheet.h"
#include "Simulation/Scenes/Texture.h"

namespace marrowby {

/// Where a texture lies on a sheet: it fills what the border leaves and keeps its shape.
struct TextureFit {
    float pixelsPerMetre = 1;
    /// Of the sheet's middle, in the texture's pixels.
    float middleX = 0;
    float middleY = 0;

    TextureFit(const Sheet& sheet, int textureWidth, int textureHeight);
};

/// The conditions under which a sheet is seen.
struct SheetView {
    PinholeCamera camera = {};
    Optics optics = {};
    Shutter shutter = {};
    SceneLight light = {};
    /// How far it moves in the picture while the shutter is open; blurs its pixel grid only.
    Point motion = {};
};

/// Draws a sheet over what the image shows. The grid of a screen's sub-pixels is a sum of waves;
/// each is weakened by the lens and by the size of a camera pixel, and then sampled: where it is
/// finer than the camera's pixels, moire remains.
void paintSheet(LinearImage& image, const SheetView& view, const PlacedSheet& placed,
                const Texture& texture);

}  // namespace marrowby
