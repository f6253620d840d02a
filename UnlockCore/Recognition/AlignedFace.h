#pragma once

#include "UnlockCore/Foundation/AffineTransform.h"
#include "UnlockCore/Foundation/Bitmap.h"
#include "UnlockCore/Recognition/AlignmentTier.h"

namespace marrowby {

/// A face turned upright, its eyes, nose and mouth corners at fixed positions.
struct AlignedFace {
    /// 112 × 112, rgbx8.
    Bitmap image;
    AlignmentTier tier = AlignmentTier::fivePoint;
    /// The similarity from the picture's pixels to the crop's, both with the origin at the
    /// top-left.
    AffineTransform transform;
};

}  // namespace marrowby
