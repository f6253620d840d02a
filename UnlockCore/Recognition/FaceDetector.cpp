// SPDX-License-Identifier: Apache-2.0
#include "UnlockCore/Recognition/FaceDetector.h"

#include "UnlockCore/Foundation/Geometry.h"

#include <cstddef>
#include <utility>

namespace marrowby {

namespace {

FaceLandmarks landmarks(const FaceLandmarkObservation& observation) {
    FaceLandmarks result;
    for (const auto& [region, points] : observation.regions) {
        if (!points.empty()) result.regions.emplace(region, points);
    }
    result.leftPupil = meanPoint(observation.leftPupil);
    result.rightPupil = meanPoint(observation.rightPupil);
    return result;
}

}  // namespace

std::expected<std::vector<DetectedFace>, std::string> FaceDetector::detect(
    const Bitmap& image) const {
    const auto rectangles = vision_->faceRectangles(image);
    if (!rectangles) return std::unexpected(rectangles.error());
    std::vector<DetectedFace> faces;
    if (rectangles->empty()) return faces;
    const auto details = vision_->faceDetails(image, *rectangles);
    if (!details) return std::unexpected(details.error());

    const Size size{static_cast<double>(image.width()), static_cast<double>(image.height())};
    for (std::size_t i = 0; i < rectangles->size(); ++i) {
        const FaceRectangleObservation& rectangle = (*rectangles)[i];
        const Rect& box = rectangle.normalizedBox;
        DetectedFace face{
            .boundingBox = {box.x * size.width, box.y * size.height, box.width * size.width,
                            box.height * size.height},
            .normalizedBoundingBox = {box.x, 1 - box.y - box.height, box.width, box.height},
            .quality = std::nullopt,
            .yaw = rectangle.yaw,
            .roll = rectangle.roll,
            .pitch = rectangle.pitch,
            .landmarks = std::nullopt,
            .imageSize = size};
        if (i < details->captureQualities.size()) face.quality = details->captureQualities[i];
        if (i < details->landmarks.size()) {
            const auto& observation = details->landmarks[i];
            if (observation) face.landmarks = landmarks(*observation);
        }
        faces.push_back(std::move(face));
    }
    return faces;
}

}  // namespace marrowby
