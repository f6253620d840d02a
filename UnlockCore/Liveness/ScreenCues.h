#pragma once

#include "UnlockCore/Liveness/GlareSample.h"
#include "UnlockCore/Liveness/MoireSample.h"
#include "UnlockCore/Platform/FourierTransform.h"
#include "UnlockCore/Platform/Imaging.h"

#include <optional>

namespace marrowby {

/// What one picture of a face tells about a screen in front of the camera; absent where it could
/// not be measured.
struct ScreenCues {
    std::optional<GlareSample> glare;
    std::optional<MoireSample> moire;

    /// Draws the image once for both.
    [[nodiscard]] static ScreenCues measure(const Bitmap& image, const Imaging& imaging,
                                            const FourierTransform& fourier);
};

}  // namespace marrowby
