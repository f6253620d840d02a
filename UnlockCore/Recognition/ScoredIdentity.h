#pragma once

#include "UnlockCore/Recognition/FaceIdentity.h"

namespace marrowby {

/// How alike a face is to an enrolled one, as cosine similarities.
struct ScoredIdentity {
    FaceIdentity identity;
    /// To the mean of the samples.
    float templateSimilarity = 0;
    /// To the most alike single sample.
    float bestSampleSimilarity = 0;

    friend bool operator==(const ScoredIdentity&, const ScoredIdentity&) = default;
};

}  // namespace marrowby
