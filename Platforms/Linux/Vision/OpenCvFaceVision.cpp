// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/Vision/OpenCvFaceVision.h"

#include "Platforms/Linux/Vision/BitmapMat.h"
#include "Platforms/Linux/Vision/FaceQuality.h"
#include "Platforms/Linux/Vision/HeadPose.h"
#include "Platforms/Linux/Vision/Landmarks98Model.h"
#include "Platforms/Linux/Vision/OnnxModel.h"
#include "Platforms/Linux/Vision/RectangleFinder.h"
#include "Platforms/Linux/Vision/YuNetFaceFinder.h"
#include "UnlockCore/Foundation/Phrase.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include <opencv2/core.hpp>

namespace marrowby {

namespace {

constexpr std::size_t mostDescribed = 4;
constexpr auto notSearched = Phrase("The picture couldn’t be searched for faces.");

struct Described {
    Rect box;
    double score = 0;
    Landmarks98 landmarks;
    std::optional<HeadPose> pose;
};

FaceLandmarkObservation observation(const Landmarks98& landmarks) {
    const auto range = [&](std::size_t first, std::size_t last) {
        std::vector<Point> points;
        for (std::size_t i = first; i <= last; ++i)
            points.push_back(landmarks[i]);
        return points;
    };
    std::vector<Point> median;
    // Down the nose and across both lips to the chin.
    for (const std::size_t i : {51U, 52U, 53U, 54U, 57U, 79U, 90U, 94U, 85U, 16U}) {
        median.push_back(range(i, i).front());
    }
    return {.regions = {{LandmarkRegion::leftEye, range(60, 67)},
                        {LandmarkRegion::rightEye, range(68, 75)},
                        {LandmarkRegion::leftEyebrow, range(33, 41)},
                        {LandmarkRegion::rightEyebrow, range(42, 50)},
                        // Starts above the tip, so that the region's mean is the tip.
                        {LandmarkRegion::nose, range(53, 59)},
                        {LandmarkRegion::noseCrest, range(51, 54)},
                        {LandmarkRegion::outerLips, range(76, 87)},
                        {LandmarkRegion::innerLips, range(88, 95)},
                        {LandmarkRegion::faceContour, range(0, 32)},
                        {LandmarkRegion::medianLine, std::move(median)}},
            .leftPupil = range(96, 96),
            .rightPupil = range(97, 97)};
}

Rect normalized(const Rect& box, const Size& size) {
    const Rect inside = intersection(box, {0, 0, size.width, size.height});
    return {inside.x / size.width, inside.y / size.height, inside.width / size.width,
            inside.height / size.height};
}

}  // namespace

struct OpenCvFaceVision::Models {
    YuNetFaceFinder faces;
    Landmarks98Model landmarks;
};

OpenCvFaceVision::OpenCvFaceVision(OnnxSource detector, OnnxSource landmarks,
                                   std::shared_ptr<WorkQueue> helper)
    : detector_(std::move(detector)),
      landmarks_(std::move(landmarks)),
      helper_(std::move(helper)) {}
OpenCvFaceVision::~OpenCvFaceVision() = default;

std::expected<std::unique_ptr<OpenCvFaceVision>, std::string> OpenCvFaceVision::load(
    const OnnxSource& detector, const OnnxSource& landmarks, std::shared_ptr<WorkQueue> helper) {
    auto vision = std::make_unique<OpenCvFaceVision>(detector, landmarks, std::move(helper));
    if (auto loaded = vision->prepare(); !loaded) return std::unexpected(std::move(loaded.error()));
    return vision;
}

std::expected<void, std::string> OpenCvFaceVision::prepare() {
    const MutexLock lock(mutex_);
    return loadModels();
}

std::expected<void, std::string> OpenCvFaceVision::loadModels() {
    if (models_) return {};
    auto faces = YuNetFaceFinder::load(detector_);
    if (!faces) return std::unexpected(faces.error());
    auto points = Landmarks98Model::load(landmarks_);
    if (!points) return std::unexpected(points.error());
    models_ = std::make_unique<Models>(*std::move(faces), *std::move(points));
    return {};
}

void OpenCvFaceVision::release() {
    const MutexLock lock(mutex_);
    models_.reset();
    OnnxModel::trimMemory();
}

std::expected<std::vector<FaceRectangleObservation>, std::string> OpenCvFaceVision::faceRectangles(
    const Bitmap& image) {
    const Size size{static_cast<double>(image.width()), static_cast<double>(image.height())};
    try {
        const auto bgr = bgrMat(image);
        if (!bgr) return std::unexpected(translated(notSearched));
        const MutexLock lock(mutex_);
        if (auto loaded = loadModels(); !loaded) return std::unexpected(std::move(loaded.error()));
        auto faces = models_->faces.find(*bgr);
        if (!faces) return std::unexpected(faces.error());

        std::ranges::sort(*faces, std::ranges::greater{},
                          [](const auto& face) { return face.box.area(); });
        std::vector<FaceRectangleObservation> observations;
        for (const YuNetFaceFinder::Face& face : *faces) {
            FaceRectangleObservation observation{.normalizedBox = normalized(face.box, size),
                                                 .yaw = std::nullopt,
                                                 .roll = std::nullopt,
                                                 .pitch = std::nullopt,
                                                 .handle = nullptr};
            if (observation.normalizedBox.isEmpty()) continue;
            if (observations.size() < mostDescribed) {
                const auto landmarks = models_->landmarks.find(*bgr, face.box, helper_.get());
                if (!landmarks) return std::unexpected(landmarks.error());
                const auto pose = headPose(*landmarks, size);
                if (pose) {
                    observation.yaw = pose->yaw;
                    observation.roll = pose->roll;
                    observation.pitch = pose->pitch;
                }
                observation.handle = std::make_shared<const Described>(
                    Described{face.box, face.score, *landmarks, pose});
            }
            observations.push_back(std::move(observation));
        }
        return observations;
    } catch (const cv::Exception&) {
        return std::unexpected(translated(notSearched));
    }
}

std::expected<FaceDetailObservations, std::string> OpenCvFaceVision::faceDetails(
    const Bitmap& image, std::span<const FaceRectangleObservation> faces) {
    try {
        const auto bgr = bgrMat(image);
        if (!bgr) return std::unexpected(translated(notSearched));
        FaceDetailObservations details;
        for (const FaceRectangleObservation& face : faces) {
            const auto* described = static_cast<const Described*>(face.handle.get());
            if (!described) {
                details.captureQualities.emplace_back();
                details.landmarks.emplace_back();
                continue;
            }
            details.captureQualities.emplace_back(
                faceQuality(*bgr, described->box, described->score, described->pose));
            details.landmarks.emplace_back(observation(described->landmarks));
        }
        return details;
    } catch (const cv::Exception&) {
        return std::unexpected(translated(notSearched));
    }
}

std::expected<std::vector<Rect>, std::string> OpenCvFaceVision::rectangles(
    const Bitmap& image, const RectangleRequest& request) {
    const Size size{static_cast<double>(image.width()), static_cast<double>(image.height())};
    try {
        auto boxes = findRectangles(image, request);
        if (!boxes) return std::unexpected(translated(notSearched));
        for (Rect& box : *boxes)
            box = normalized(box, size);
        return *std::move(boxes);
    } catch (const cv::Exception&) {
        return std::unexpected(translated(notSearched));
    }
}

}  // namespace marrowby
