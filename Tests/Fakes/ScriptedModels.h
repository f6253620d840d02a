// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Liveness/AntiSpoofScoring.h"
#include "UnlockCore/Recognition/FaceEmbedder.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace marrowby {

/// Embeds every face as the test says.
class ScriptedEmbedder final : public FaceEmbedder {
  public:
    Embedding embedding{1, 0};
    std::optional<FaceModelError> fault;
    /// Called by embed().
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

/// Scores every face as the test says.
class ScriptedAntiSpoof final : public AntiSpoofScoring {
  public:
    float live = 1;
    std::optional<RealFaceModelError> fault;
    std::optional<Rect> lastBox;

    [[nodiscard]] std::string_view modelIdentifier() const override { return "scripted"; }
    [[nodiscard]] std::expected<AntiSpoofScore, RealFaceModelError> score(
        const RGBPixels& /*image*/, const Rect& faceBox) override {
        lastBox = faceBox;
        if (fault) return std::unexpected(*fault);
        return AntiSpoofScore{live, live, live};
    }
};

}  // namespace marrowby
