#pragma once

#include "UnlockCore/Recognition/FaceEmbedder.h"

#include <functional>
#include <optional>
#include <string>

namespace marrowby {

/// Embeds every face as the test says.
class ScriptedEmbedder final : public FaceEmbedder {
  public:
    Embedding embedding{1, 0};
    std::optional<FaceModelError> fault;
    /// What happens meanwhile.
    std::function<void()> duringEmbedding;

    [[nodiscard]] const std::string& modelIdentifier() const override { return name_; }
    [[nodiscard]] std::int64_t dimension() const override { return 2; }
    [[nodiscard]] std::expected<Embedding, FaceModelError> embed(const Bitmap& /*face*/) override {
        if (duringEmbedding) duringEmbedding();
        if (fault) return std::unexpected(*fault);
        return embedding;
    }

  private:
    std::string name_ = "scripted";
};

}  // namespace marrowby
