#pragma once

#include "UnlockCore/Platform/FaceVision.h"

namespace marrowby {

/// The Vision framework, with the newest revision of each request. A face’s handle holds the image
/// that it was found in, so that the second call works on what the first one prepared. The first
/// calls of a process take much longer: the system loads its networks. Exceptions come back as
/// errors.
class VisionFaceVision final : public FaceVision {
  public:
    [[nodiscard]] std::expected<std::vector<FaceRectangleObservation>, std::string> faceRectangles(
        const Bitmap& image) override;
    /// Faces that another finder found get nothing.
    [[nodiscard]] std::expected<FaceDetailObservations, std::string> faceDetails(
        const Bitmap& image, std::span<const FaceRectangleObservation> faces) override;
    [[nodiscard]] std::expected<std::vector<Rect>, std::string> rectangles(
        const Bitmap& image, const RectangleRequest& request) override;
};

}  // namespace marrowby
