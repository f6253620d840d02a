#pragma once

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

}  // namespace marrowby
