// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Foundation/Bitmap.h"
#include "UnlockCore/Platform/FaceVision.h"
#include "UnlockCore/Recognition/DetectedFace.h"

#include <expected>
#include <string>
#include <vector>

namespace marrowby {

/// Finds and describes the faces of an image. One thread at a time.
class FaceDetector {
  public:
    /// `vision` outlives the detector.
    explicit FaceDetector(FaceVision& vision) : vision_(&vision) {}

    /// In the finder's order; empty where there is no face. The error is the system's localized
    /// text.
    [[nodiscard]] std::expected<std::vector<DetectedFace>, std::string> detect(
        const Bitmap& image) const;

  private:
    FaceVision* vision_;
};

}  // namespace marrowby
