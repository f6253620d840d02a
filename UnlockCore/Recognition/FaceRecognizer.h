// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Foundation/Bitmap.h"
#include "UnlockCore/Platform/FaceVision.h"
#include "UnlockCore/Platform/Imaging.h"
#include "UnlockCore/Recognition/CameraFrame.h"
#include "UnlockCore/Recognition/DetectedFace.h"
#include "UnlockCore/Recognition/FaceAligner.h"
#include "UnlockCore/Recognition/FaceDetector.h"
#include "UnlockCore/Recognition/FaceEmbedder.h"
#include "UnlockCore/Recognition/FaceEmbedding.h"
#include "UnlockCore/Recognition/ModelError.h"

#include <expected>
#include <memory>
#include <optional>
#include <string>
#include <variant>

namespace marrowby {

/// The face of one frame, ready to be compared.
struct FaceRecognition {
    /// Normalised.
    Embedding embedding;
    /// 112 × 112, rgbx8.
    Bitmap alignedImage;
    AlignmentTier alignmentTier = AlignmentTier::fivePoint;
    DetectedFace face;
};

namespace facerecognitionerror {

struct NoFace {
    friend bool operator==(const NoFace&, const NoFace&) = default;
};
struct CannotAlign {
    friend bool operator==(const CannotAlign&, const CannotAlign&) = default;
};
/// The search for faces itself failed; the text is the system's own.
struct DetectionFailed {
    std::string systemText;
    friend bool operator==(const DetectionFailed&, const DetectionFailed&) = default;
};

/// The face reaches so far over the picture's edge that it couldn't be lined up.
struct CutOff {
    friend bool operator==(const CutOff&, const CutOff&) = default;
};

}  // namespace facerecognitionerror

struct FaceRecognitionError
    : std::variant<facerecognitionerror::NoFace, facerecognitionerror::CannotAlign, FaceModelError,
                   facerecognitionerror::DetectionFailed, facerecognitionerror::CutOff> {
    using NoFace = facerecognitionerror::NoFace;
    using CannotAlign = facerecognitionerror::CannotAlign;
    using DetectionFailed = facerecognitionerror::DetectionFailed;
    using CutOff = facerecognitionerror::CutOff;
    using variant::variant;
};

[[nodiscard]] std::string description(const FaceRecognitionError& error);

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

    /// First half: selects the face.
    [[nodiscard]] std::expected<DetectedFace, FaceRecognitionError> find(
        const CameraFrame& frame, const std::optional<DetectedFace>& previousFace) const;
    /// Second half: aligns and embeds it.
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
