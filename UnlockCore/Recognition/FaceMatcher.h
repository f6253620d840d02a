// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Recognition/FaceIdentity.h"

#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace marrowby {

/// How similar a face is to an enrolled one, as cosine similarities.
struct ScoredIdentity {
    FaceIdentity identity;
    /// To the mean of the samples.
    float templateSimilarity = 0;
    /// To the most similar single sample.
    float bestSampleSimilarity = 0;

    friend bool operator==(const ScoredIdentity&, const ScoredIdentity&) = default;
};

/// Compares one embedding with the enrolled faces.
namespace facematcher {

inline constexpr float lowestThreshold = 0.43F;
inline constexpr float highestThreshold = 0.8F;

/// The identities of this model by descending template similarity, equal ones in the given order.
/// Empty for an unusable probe.
[[nodiscard]] std::vector<ScoredIdentity> score(std::span<const float> probe,
                                                std::span<const FaceIdentity> identities,
                                                std::string_view modelIdentifier);

/// The enabled identity with the most similar template, if that and its best sample both reach the
/// clamped threshold. A runner-up is never tried.
[[nodiscard]] std::optional<ScoredIdentity> bestMatch(std::span<const float> probe,
                                                      std::span<const FaceIdentity> identities,
                                                      std::string_view modelIdentifier,
                                                      float threshold);

/// Whether both similarities reach the clamped threshold.
[[nodiscard]] bool isMatch(const ScoredIdentity& scored, float threshold);

/// The threshold that is applied: 0.5 for one that is not finite.
[[nodiscard]] float clampedThreshold(float threshold);

}  // namespace facematcher

}  // namespace marrowby
