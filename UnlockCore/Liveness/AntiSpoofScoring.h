#pragma once

#include "UnlockCore/Foundation/Geometry.h"
#include "UnlockCore/Liveness/AntiSpoofScore.h"
#include "UnlockCore/Liveness/RGBPixels.h"
#include "UnlockCore/Liveness/RealFaceModelError.h"

#include <expected>
#include <string_view>

namespace marrowby {

/// Judges whether the face in a picture is live or a print or a screen. Any thread.
class AntiSpoofScoring {
  public:
    virtual ~AntiSpoofScoring() = default;

    /// Names the model's version.
    [[nodiscard]] virtual std::string_view modelIdentifier() const = 0;

    /// `faceBox` is in the image's pixels with the origin at the top-left.
    [[nodiscard]] virtual std::expected<AntiSpoofScore, RealFaceModelError> score(
        const RGBPixels& image, const Rect& faceBox) = 0;
};

}  // namespace marrowby
