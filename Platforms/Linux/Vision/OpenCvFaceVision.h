#pragma once

#include "Platforms/Linux/Vision/OnnxFile.h"
#include "UnlockCore/Platform/FaceVision.h"
#include "UnlockCore/Platform/WorkQueues.h"

#include <expected>
#include <memory>
#include <string>

namespace marrowby {

/// Faces by the YuNet detector, a network of 98 landmarks and a generic head. The left eye, brow
/// and pupil are the ones on the left of the picture. Rectangles by their outlines. Of a crowd only
/// the four largest faces get angles, landmarks and a quality.
class OpenCvFaceVision final : public FaceVision {
  public:
    /// The error is a sentence for the user. A helper takes half of the landmarks' work.
    [[nodiscard]] static std::expected<std::unique_ptr<OpenCvFaceVision>, std::string> load(
        const NetworkFile& detector, const NetworkFile& landmarks,
        std::shared_ptr<WorkQueue> helper = nullptr);
    ~OpenCvFaceVision() override;

    [[nodiscard]] std::expected<std::vector<FaceRectangleObservation>, std::string> faceRectangles(
        const Bitmap& image) override;
    [[nodiscard]] std::expected<FaceDetailObservations, std::string> faceDetails(
        const Bitmap& image, std::span<const FaceRectangleObservation> faces) override;
    [[nodiscard]] std::expected<std::vector<Rect>, std::string> rectangles(
        const Bitmap& image, const RectangleRequest& request) override;

  private:
    struct Networks;
    OpenCvFaceVision(std::unique_ptr<Networks> networks, std::shared_ptr<WorkQueue> helper);

    std::unique_ptr<Networks> networks_;
    std::shared_ptr<WorkQueue> helper_;
};

}  // namespace marrowby
