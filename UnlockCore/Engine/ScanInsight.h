// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Foundation/Bitmap.h"
#include "UnlockCore/Foundation/Geometry.h"
#include "UnlockCore/Liveness/LivenessCue.h"
#include "UnlockCore/Liveness/LivenessDecision.h"

#include <optional>
#include <string>
#include <vector>

namespace marrowby {

/// What a scan sees and thinks after one frame, for showing it.
struct ScanInsight {
    struct Likeness {
        std::string name;
        /// Cosine similarity; a match from the limit on, where the face is enabled.
        float similarity = 0;
        bool isEnabled = false;
    };
    struct Cue {
        LivenessCue cue = LivenessCue::realFace;
        /// None where the frame did not measure it.
        std::optional<float> level;
        /// The model and a head turn speak for a face from it on, the others against.
        float limit = 0;
        /// Whether the decision heeds it.
        bool isHeeded = false;
        bool hasFired = false;
    };

    /// The working image.
    Bitmap picture;
    /// In its pixels; none without a usable face.
    std::optional<Rect> face;
    std::vector<Likeness> likenesses{};
    float likenessLimit = 0;
    /// In the evaluator's order; empty before the first face.
    std::vector<Cue> cues{};
    LivenessDecision decision{};
};

}  // namespace marrowby
