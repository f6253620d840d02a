#pragma once

#include "UnlockCore/Liveness/AntiSpoofScoring.h"

#include <optional>
#include <string_view>

namespace marrowby {

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
