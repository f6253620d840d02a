// SPDX-License-Identifier: Apache-2.0
#include "UnlockCore/Recognition/FaceMatcher.h"

#include "UnlockCore/Recognition/FaceEmbedding.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace marrowby::facematcher {

namespace {

struct Similarity {
    const FaceIdentity* identity = nullptr;
    float toTemplate = 0;
    float toBestSample = 0;
};

Similarity compare(std::span<const float> probe, const FaceIdentity& identity) {
    Similarity result{.identity = &identity};
    std::vector<Embedding> embeddings;
    embeddings.reserve(identity.samples.size());
    bool isFirst = true;
    for (const FaceSample& sample : identity.samples) {
        const float similarity = faceembedding::cosine(probe, sample.embedding);
        result.toBestSample = isFirst ? similarity : std::max(result.toBestSample, similarity);
        isFirst = false;
        embeddings.push_back(sample.embedding);
    }
    if (const auto mean = faceembedding::meanTemplate(embeddings)) {
        const float similarity = faceembedding::cosine(probe, *mean);
        // A damaged sample gives NaN, which cannot be sorted.
        if (std::isfinite(similarity)) result.toTemplate = similarity;
    }
    return result;
}

std::vector<Similarity> ranked(std::span<const float> probe,
                               std::span<const FaceIdentity> identities,
                               std::string_view modelIdentifier, bool onlyEnabled) {
    std::vector<Similarity> results;
    if (!faceembedding::isUsable(probe)) return results;
    for (const FaceIdentity& identity : identities) {
        if (identity.modelIdentifier != modelIdentifier ||
            identity.dimension != static_cast<std::int64_t>(probe.size()) ||
            (onlyEnabled && !identity.isEnabled)) {
            continue;
        }
        results.push_back(compare(probe, identity));
    }
    // By address: equal ones keep their order in the array.
    std::ranges::sort(results, [](const Similarity& a, const Similarity& b) {
        if (a.toTemplate != b.toTemplate) return a.toTemplate > b.toTemplate;
        return a.identity < b.identity;
    });
    return results;
}

ScoredIdentity scored(const Similarity& similarity) {
    return {.identity = *similarity.identity,
            .templateSimilarity = similarity.toTemplate,
            .bestSampleSimilarity = similarity.toBestSample};
}

}  // namespace

std::vector<ScoredIdentity> score(std::span<const float> probe,
                                  std::span<const FaceIdentity> identities,
                                  std::string_view modelIdentifier) {
    std::vector<ScoredIdentity> results;
    for (const Similarity& similarity : ranked(probe, identities, modelIdentifier, false)) {
        results.push_back(scored(similarity));
    }
    return results;
}

std::optional<ScoredIdentity> bestMatch(std::span<const float> probe,
                                        std::span<const FaceIdentity> identities,
                                        std::string_view modelIdentifier, float threshold) {
    const auto results = ranked(probe, identities, modelIdentifier, true);
    if (results.empty()) return std::nullopt;
    ScoredIdentity best = scored(results.front());
    return isMatch(best, threshold) ? std::optional(std::move(best)) : std::nullopt;
}

bool isMatch(const ScoredIdentity& scored, float threshold) {
    const float applied = clampedThreshold(threshold);
    return scored.templateSimilarity >= applied && scored.bestSampleSimilarity >= applied;
}

float clampedThreshold(float threshold) {
    if (!std::isfinite(threshold)) return 0.5F;
    return std::clamp(threshold, lowestThreshold, highestThreshold);
}

}  // namespace marrowby::facematcher
