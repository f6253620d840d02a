#pragma once

#include "UnlockCore/Platform/FaceVision.h"
#include "UnlockCore/Platform/Imaging.h"
#include "UnlockCore/Recognition/CameraFrame.h"
#include "UnlockCore/Recognition/DetectedFace.h"
#include "UnlockCore/Recognition/FaceAligner.h"
#include "UnlockCore/Recognition/FaceDetector.h"
#include "UnlockCore/Recognition/FaceEmbedder.h"
#include "UnlockCore/Recognition/FaceRecognition.h"
#include "UnlockCore/Recognition/FaceRecognitionError.h"

#include <expected>
#include <memory>
#include <optional>

namespace marrowby {

/// One camera frame to one recognised face. One thread at a time.
class FaceRecognizer {
  public:
    /// `minimumFaceWidth`: pixels of the working image. `vision` and `imaging` outlive the
    /// recognizer.
    FaceRecognizer(FaceVision& vision, const Imaging& imaging,
                   std::shared_ptr<FaceEmbedder> embedder, double minimumFaceWidth);

    /// Stays with `previousFace` as long as a face is near it, else takes the largest.
    [[nodiscard]] std::expected<FaceRecognition, FaceRecognitionError> recognise(
        const CameraFrame& frame, const std::optional<DetectedFace>& previousFace) const;

    /// The first half of it: which face.
    [[nodiscard]] std::expected<DetectedFace, FaceRecognitionError> find(
        const CameraFrame& frame, const std::optional<DetectedFace>& previousFace) const;
    /// The second half: what it looks like.
    [[nodiscard]] std::expected<FaceRecognition, FaceRecognitionError> recogniseFound(
        const CameraFrame& frame, const DetectedFace& face) const;

    [[nodiscard]] FaceEmbedder& embedder() const { return *embedder_; }

  private:
    FaceDetector detector_;
    FaceAligner aligner_;
    std::shared_ptr<FaceEmbedder> embedder_;
    double minimumFaceWidth_;
};

}  // namespace marrowby
