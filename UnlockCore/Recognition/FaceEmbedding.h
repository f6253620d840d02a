// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <span>
#include <vector>

namespace marrowby {

/// A face as a vector of 32-bit floats; 128 long and of unit length once stored or compared.
using Embedding = std::vector<float>;

namespace faceembedding {

/// Not empty, all finite, not all zero.
[[nodiscard]] bool isUsable(std::span<const float> embedding);

/// Divided by its L2 norm; unchanged where that is not a positive finite number.
[[nodiscard]] Embedding normalized(std::span<const float> embedding);

/// The normalised mean of the normalised embeddings that are as long as the first; nothing without
/// any.
[[nodiscard]] std::optional<Embedding> meanTemplate(std::span<const Embedding> embeddings);

/// Cosine similarity, -1…1; 0 where the lengths differ or a norm is 0.
[[nodiscard]] float cosine(std::span<const float> a, std::span<const float> b);

}  // namespace faceembedding

}  // namespace marrowby
