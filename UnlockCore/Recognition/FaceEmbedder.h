// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Foundation/Bitmap.h"
#include "UnlockCore/Recognition/FaceEmbedding.h"
#include "UnlockCore/Recognition/ModelError.h"

#include <cstdint>
#include <expected>
#include <string>

namespace marrowby {

/// Turns an aligned face into numbers. Any thread.
class FaceEmbedder {
  public:
    virtual ~FaceEmbedder() = default;

    /// Names the model; embeddings of two models cannot be compared.
    [[nodiscard]] virtual const std::string& modelIdentifier() const = 0;
    /// How long an embedding is.
    [[nodiscard]] virtual std::int64_t dimension() const = 0;
    /// Normalised.
    [[nodiscard]] virtual std::expected<Embedding, FaceModelError> embed(
        const Bitmap& alignedFace) = 0;
};

}  // namespace marrowby
