// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Foundation/Bitmap.h"
#include "UnlockCore/Foundation/Geometry.h"

#include <expected>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace marrowby {

/// The parts of a face that a landmark finder reports, left and right as the finder names them; the
/// position in the list is the region's index.
enum class LandmarkRegion {
    leftEye,
    rightEye,
    leftEyebrow,
    rightEyebrow,
    nose,
    noseCrest,
    outerLips,
    innerLips,
    faceContour,
    medianLine,
};

struct FaceRectangleObservation {
    /// 0…1 of the image, origin at the top-left.
    Rect normalizedBox;
    /// Radians; yaw positive to the person's left, pitch negative up.
    std::optional<float> yaw;
    std::optional<float> roll;
    std::optional<float> pitch;
    /// The finder's own object, handed back to it for the second request.
    std::shared_ptr<const void> handle;
};

/// Points in image pixels, origin at the top-left.
struct FaceLandmarkObservation {
    std::map<LandmarkRegion, std::vector<Point>> regions;
    std::vector<Point> leftPupil;
    std::vector<Point> rightPupil;
};

/// Results of the second request, by position of the input face; each list may be shorter, each
/// entry empty.
struct FaceDetailObservations {
    std::vector<std::optional<float>> captureQualities;
    std::vector<std::optional<FaceLandmarkObservation>> landmarks;
};

/// Which rectangles are looked for.
struct RectangleRequest {
    /// 0…1.
    double minimumConfidence = 0;
    /// Of the shorter side, in parts of the image's.
    double minimumSize = 0;
    int maximumObservations = 0;
    /// Shorter side to longer.
    double minimumAspectRatio = 0;
    double maximumAspectRatio = 0;
    /// How far a corner may be from a right angle.
    double quadratureToleranceDegrees = 0;

    friend bool operator==(const RectangleRequest&, const RectangleRequest&) = default;
};

/// The system's finder of faces and rectangles. Any one thread at a time. The errors are the
/// system's localized texts.
class FaceVision {
  public:
    virtual ~FaceVision() = default;

    /// Loads what the requests need, which they do themselves otherwise. Any thread.
    [[nodiscard]] virtual std::expected<void, std::string> prepare() { return {}; }
    /// Gives the memory for it back. Any thread; waits for a request under way.
    virtual void release() {}

    [[nodiscard]] virtual std::expected<std::vector<FaceRectangleObservation>, std::string>
    faceRectangles(const Bitmap& image) = 0;

    /// Capture quality (0…1, higher is better) and landmarks of faces found in the same image, in
    /// one call.
    [[nodiscard]] virtual std::expected<FaceDetailObservations, std::string> faceDetails(
        const Bitmap& image, std::span<const FaceRectangleObservation> faces) = 0;

    /// The boxes around rectangles seen in perspective, such as a phone or a sheet of paper: 0…1 of
    /// the image, origin at the top-left.
    [[nodiscard]] virtual std::expected<std::vector<Rect>, std::string> rectangles(
        const Bitmap& image, const RectangleRequest& request) = 0;
};

}  // namespace marrowby
