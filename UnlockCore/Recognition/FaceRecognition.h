#pragma once

#include "UnlockCore/Foundation/Bitmap.h"
#include "UnlockCore/Recognition/AlignmentTier.h"
#include "UnlockCore/Recognition/DetectedFace.h"
#include "UnlockCore/Recognition/FaceEmbedding.h"

namespace marrowby {

/// The face of one frame, ready to be compared.
struct FaceRecognition {
    /// Normalised.
    Embedding embedding;
    /// 112 × 112, rgbx8.
    Bitmap alignedImage;
    AlignmentTier alignmentTier = AlignmentTier::fivePoint;
    DetectedFace face;
};

}  // namespace marrowby
