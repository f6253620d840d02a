// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Platform/FaceVision.h"

#include <expected>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace marrowby {

/// Finds the faces that the test puts in front of it, in every picture.
class FakeFaceVision final : public FaceVision {
  public:
    std::vector<FaceRectangleObservation> faces;
    FaceDetailObservations details;
    /// Make the first or the second request fail with this text.
    std::optional<std::string> rectanglesFault;
    std::optional<std::string> detailsFault;
    int rectangleRequests = 0;
    std::optional<std::string> preparationFault;
    bool isPrepared = false;
    /// Boxes that the third request finds, and what it was last asked for.
    std::vector<Rect> boxes;
    std::optional<std::string> boxesFault;
    std::optional<RectangleRequest> lastRectangleRequest;

    /// Adds a face that looks into the camera, with all landmarks that an alignment needs. The box
    /// is in 0…1 of the picture of this size, origin at the top-left.
    void addFace(const Rect& box, const Size& size) {
        faces.push_back(
            {.normalizedBox = box, .yaw = 0.F, .roll = 0.F, .pitch = 0.F, .handle = nullptr});
        const auto at = [&](double x, double y) {
            return Point{(box.x + x * box.width) * size.width,
                         (box.y + y * box.height) * size.height};
        };
        details.captureQualities.emplace_back(0.9F);
        details.landmarks.push_back(FaceLandmarkObservation{
            .regions = {{LandmarkRegion::nose, {at(0.5, 0.55)}},
                        {LandmarkRegion::outerLips, {at(0.35, 0.75), at(0.65, 0.75)}}},
            .leftPupil = {at(0.32, 0.35)},
            .rightPupil = {at(0.68, 0.35)}});
    }
    void removeFaces() {
        faces.clear();
        details = {};
    }

    [[nodiscard]] std::expected<void, std::string> prepare() override {
        if (preparationFault) return std::unexpected(*preparationFault);
        isPrepared = true;
        return {};
    }
    void release() override { isPrepared = false; }

    [[nodiscard]] std::expected<std::vector<FaceRectangleObservation>, std::string> faceRectangles(
        const Bitmap& /*image*/) override {
        ++rectangleRequests;
        if (rectanglesFault) return std::unexpected(*rectanglesFault);
        return faces;
    }

    [[nodiscard]] std::expected<FaceDetailObservations, std::string> faceDetails(
        const Bitmap& /*image*/, std::span<const FaceRectangleObservation> /*asked*/) override {
        if (detailsFault) return std::unexpected(*detailsFault);
        return details;
    }

    [[nodiscard]] std::expected<std::vector<Rect>, std::string> rectangles(
        const Bitmap& /*image*/, const RectangleRequest& request) override {
        lastRectangleRequest = request;
        if (boxesFault) return std::unexpected(*boxesFault);
        return boxes;
    }
};

}  // namespace marrowby
