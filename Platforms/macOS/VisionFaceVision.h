// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Platform/FaceVision.h"

namespace marrowby {

/// The Vision framework, newest revision of each request. A face’s handle retains its image, so
/// that faceDetails() reuses prepared data. The first calls of a process are much slower: the
/// system loads its models. Exceptions become errors.
class VisionFaceVision final : public FaceVision {
  public:
    [[nodiscard]] std::expected<std::vector<FaceRectangleObservation>, std::string> faceRectangles(
        const Bitmap& image) override;
    /// Returns nothing for faces of another finder.
    [[nodiscard]] std::expected<FaceDetailObservations, std::string> faceDetails(
        const Bitmap& image, std::span<const FaceRectangleObservation> faces) override;
    [[nodiscard]] std::expected<std::vector<Rect>, std::string> rectangles(
        const Bitmap& image, const RectangleRequest& request) override;
};

}  // namespace marrowby
