// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Foundation/Geometry.h"
#include "UnlockCore/Liveness/RGBPixels.h"
#include "UnlockCore/Recognition/ModelError.h"

#include <expected>
#include <string_view>

namespace marrowby {

/// The real-face model's probabilities, 0…1, that one face is live: fused, and of the 2.7× and
/// the 4.0× crop alone.
struct AntiSpoofScore {
    float live = 0;
    float live27 = 0;
    float live40 = 0;

    friend bool operator==(const AntiSpoofScore&, const AntiSpoofScore&) = default;
};

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
