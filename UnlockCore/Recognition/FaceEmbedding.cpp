// SPDX-License-Identifier: Apache-2.0
#include "UnlockCore/Recognition/FaceEmbedding.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

namespace marrowby::faceembedding {

namespace {

/// Four lanes, so that the compiler vectorises.
float dot(std::span<const float> a, std::span<const float> b) {
    std::array<float, 4> lanes{};
    const std::size_t count = a.size();
    std::size_t i = 0;
    for (; i + lanes.size() <= count; i += lanes.size()) {
        for (std::size_t lane = 0; lane < lanes.size(); ++lane) {
            lanes[lane] += a[i + lane] * b[i + lane];
        }
    }
    float rest = 0;
    for (; i < count; ++i)
        rest += a[i] * b[i];
    return (lanes[0] + lanes[1]) + (lanes[2] + lanes[3]) + rest;
}

}  // namespace

bool isUsable(std::span<const float> embedding) {
    return std::ranges::all_of(embedding, [](float value) { return std::isfinite(value); }) &&
           std::ranges::any_of(embedding, [](float value) { return value != 0; });
}

Embedding normalized(std::span<const float> embedding) {
    Embedding result(embedding.begin(), embedding.end());
    const float squares = dot(embedding, embedding);
    const float norm = std::sqrt(squares);
    if (!(squares > 0) || !std::isfinite(norm)) return result;
    for (float& value : result)
        value /= norm;
    return result;
}

std::optional<Embedding> meanTemplate(std::span<const Embedding> embeddings) {
    if (embeddings.empty() || embeddings.front().empty()) return std::nullopt;
    Embedding sum(embeddings.front().size());
    float count = 0;
    for (const Embedding& embedding : embeddings) {
        if (embedding.size() != sum.size()) continue;
        std::ranges::transform(sum, normalized(embedding), sum.begin(), std::plus{});
        count += 1;
    }
    for (float& value : sum)
        value /= count;
    return normalized(sum);
}

float cosine(std::span<const float> a, std::span<const float> b) {
    if (a.size() != b.size()) return 0;
    const float norms = std::sqrt(dot(a, a)) * std::sqrt(dot(b, b));
    if (!(norms > 0)) return 0;
    const float similarity = dot(a, b) / norms;
    // An overflow in a stored vector matches nothing.
    return std::isfinite(similarity) ? similarity : 0;
}

}  // namespace marrowby::faceembedding
