// SPDX-License-Identifier: Apache-2.0
#include "UnlockCore/Recognition/FaceRecognizer.h"

#include "UnlockCore/Foundation/Phrase.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace marrowby {

namespace {

struct DescribeFaceRecognitionError {
    std::string operator()(const FaceRecognitionError::NoFace& /*error*/) const {
        return translated("No face in front of the camera.");
    }
    std::string operator()(const FaceRecognitionError::CannotAlign& /*error*/) const {
        return translated("The face couldn’t be lined up.");
    }
    std::string operator()(const FaceModelError& error) const { return description(error); }
    std::string operator()(const FaceRecognitionError::DetectionFailed& error) const {
        return error.systemText;
    }
    std::string operator()(const FaceRecognitionError::CutOff& /*error*/) const {
        return translated("The face reaches over the picture’s edge. Move back a little.");
    }
};

}  // namespace

std::string description(const FaceRecognitionError& error) {
    return std::visit(DescribeFaceRecognitionError{}, error);
}

namespace {

/// Between box centres, in parts of the image.
constexpr double nearby = 0.3;

const DetectedFace& choose(const std::vector<DetectedFace>& faces,
                           const std::optional<DetectedFace>& previousFace) {
    if (previousFace) {
        const auto gap =
            [centre = previousFace->normalizedBoundingBox.centre()](const DetectedFace& face) {
                return distance(face.normalizedBoundingBox.centre(), centre);
            };
        const auto nearest = std::ranges::min_element(faces, {}, gap);
        if (gap(*nearest) < nearby) return *nearest;
    }
    return *std::ranges::max_element(
        faces, {}, [](const DetectedFace& face) { return face.boundingBox.area(); });
}

/// A landmark outside the picture is a guess, and alignment needs the eyes. True without landmarks.
bool showsEyes(const DetectedFace& face) {
    const auto eyes = face.landmarks ? FaceAligner::eyePoints(*face.landmarks) : std::nullopt;
    if (!eyes) return true;
    return std::ranges::none_of(*eyes, [&](const Point& eye) {
        return eye.x < 0 || eye.y < 0 || eye.x > face.imageSize.width ||
               eye.y > face.imageSize.height;
    });
}

bool touchesEdge(const DetectedFace& face) {
    constexpr double margin = 0.5;
    const Rect& box = face.boundingBox;
    return !(box.x > margin && box.y > margin && box.maxX() < face.imageSize.width - margin &&
             box.maxY() < face.imageSize.height - margin);
}

}  // namespace

FaceRecognizer::FaceRecognizer(FaceVision& vision, const Imaging& imaging,
                               std::shared_ptr<FaceEmbedder> embedder, double minimumFaceWidth)
    : detector_(vision),
      aligner_(imaging),
      embedder_(std::move(embedder)),
      minimumFaceWidth_(minimumFaceWidth) {}

std::expected<FaceRecognition, FaceRecognitionError> FaceRecognizer::recognise(
    const CameraFrame& frame, const std::optional<DetectedFace>& previousFace) const {
    const auto face = find(frame, previousFace);
    if (!face) return std::unexpected(face.error());
    return recogniseFound(frame, *face);
}

std::expected<DetectedFace, FaceRecognitionError> FaceRecognizer::find(
    const CameraFrame& frame, const std::optional<DetectedFace>& previousFace) const {
    auto faces = detector_.detect(frame.image);
    if (!faces)
        return std::unexpected<FaceRecognitionError>(
            FaceRecognitionError::DetectionFailed{faces.error()});
    std::erase_if(*faces, [this](const DetectedFace& face) {
        return !(face.boundingBox.width >= minimumFaceWidth_);
    });
    if (faces->empty())
        return std::unexpected<FaceRecognitionError>(FaceRecognitionError::NoFace{});

    return choose(*faces, previousFace);
}

std::expected<FaceRecognition, FaceRecognitionError> FaceRecognizer::recogniseFound(
    const CameraFrame& frame, const DetectedFace& face) const {
    if (!showsEyes(face))
        return std::unexpected<FaceRecognitionError>(FaceRecognitionError::CutOff{});
    auto aligned = aligner_.align(face, frame.image);
    if (!aligned) {
        if (touchesEdge(face))
            return std::unexpected<FaceRecognitionError>(FaceRecognitionError::CutOff{});
        return std::unexpected<FaceRecognitionError>(FaceRecognitionError::CannotAlign{});
    }
    auto embedding = embedder_->embed(aligned->image);
    if (!embedding) return std::unexpected<FaceRecognitionError>(std::move(embedding).error());
    return FaceRecognition{.embedding = *std::move(embedding),
                           .alignedImage = std::move(aligned->image),
                           .alignmentTier = aligned->tier,
                           .face = face};
}

}  // namespace marrowby
