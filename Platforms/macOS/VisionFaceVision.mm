// SPDX-License-Identifier: Apache-2.0
#import "Platforms/macOS/VisionFaceVision.h"

#import "Platforms/macOS/CoreGraphicsBitmap.h"
#import "Platforms/macOS/FoundationError.h"
#import "Platforms/macOS/Rules/VisionCorner.h"
#include "UnlockCore/Foundation/Phrase.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>

#import <Vision/Vision.h>

namespace marrowby {

namespace {

constexpr auto unreadable = Phrase("The picture couldn’t be searched for faces.");

struct Found {
    VNImageRequestHandler* handler;
    VNFaceObservation* face;
};

const Found* found(const FaceRectangleObservation& face) {
    return static_cast<const Found*>(face.handle.get());
}

VNImageRequestHandler* requestHandler(const Bitmap& image) {
    const auto picture = coreGraphicsImage(image);
    if (!picture) return nil;
    return [[VNImageRequestHandler alloc] initWithCGImage:picture.get() options:@{}];
}

std::optional<std::string> perform(VNImageRequestHandler* handler, NSArray<VNRequest*>* requests) {
    if (!handler) return translated(unreadable);
    NSError* error = nil;
    if ([handler performRequests:requests error:&error]) return std::nullopt;
    return sentence(error);
}

Rect rect(CGRect box) {
    return visioncorner::fromTopLeft({box.origin.x, box.origin.y, box.size.width, box.size.height});
}

std::optional<float> optionalFloat(NSNumber* number) {
    return number ? std::optional<float>(number.floatValue) : std::nullopt;
}

std::vector<Point> points(VNFaceLandmarkRegion2D* region, CGSize imageSize) {
    std::vector<Point> result;
    const CGPoint* first = [region pointsInImageOfSize:imageSize];
    if (!first) return result;
    for (const CGPoint& point : std::span<const CGPoint>(first, region.pointCount))
        result.push_back(visioncorner::fromTopLeft({point.x, point.y}, imageSize.height));
    return result;
}

FaceLandmarkObservation observation(VNFaceLandmarks2D* landmarks, CGSize imageSize) {
    const std::array<std::pair<LandmarkRegion, VNFaceLandmarkRegion2D*>, 10> regions{{
        {LandmarkRegion::leftEye, landmarks.leftEye},
        {LandmarkRegion::rightEye, landmarks.rightEye},
        {LandmarkRegion::leftEyebrow, landmarks.leftEyebrow},
        {LandmarkRegion::rightEyebrow, landmarks.rightEyebrow},
        {LandmarkRegion::nose, landmarks.nose},
        {LandmarkRegion::noseCrest, landmarks.noseCrest},
        {LandmarkRegion::outerLips, landmarks.outerLips},
        {LandmarkRegion::innerLips, landmarks.innerLips},
        {LandmarkRegion::faceContour, landmarks.faceContour},
        {LandmarkRegion::medianLine, landmarks.medianLine},
    }};
    FaceLandmarkObservation result;
    for (const auto& [region, found] : regions) {
        if (auto list = points(found, imageSize); !list.empty()) {
            result.regions.emplace(region, std::move(list));
        }
    }
    result.leftPupil = points(landmarks.leftPupil, imageSize);
    result.rightPupil = points(landmarks.rightPupil, imageSize);
    return result;
}

}  // namespace

std::expected<std::vector<FaceRectangleObservation>, std::string> VisionFaceVision::faceRectangles(
    const Bitmap& image) {
    @autoreleasepool {
        @try {
            VNImageRequestHandler* handler = requestHandler(image);
            VNDetectFaceRectanglesRequest* request = [[VNDetectFaceRectanglesRequest alloc] init];
            if (auto error = perform(handler, @[ request ])) {
                return std::unexpected(*std::move(error));
            }
            std::vector<FaceRectangleObservation> faces;
            for (VNFaceObservation* face in request.results) {
                faces.push_back({.normalizedBox = rect(face.boundingBox),
                                 .yaw = optionalFloat(face.yaw),
                                 .roll = optionalFloat(face.roll),
                                 .pitch = optionalFloat(face.pitch),
                                 .handle = std::make_shared<const Found>(Found{handler, face})});
            }
            return faces;
        } @catch (NSException* exception) {
            return std::unexpected(sentence(exception));
        }
    }
}

std::expected<FaceDetailObservations, std::string> VisionFaceVision::faceDetails(
    const Bitmap& image, std::span<const FaceRectangleObservation> faces) {
    FaceDetailObservations details;
    details.captureQualities.resize(faces.size());
    details.landmarks.resize(faces.size());
    @autoreleasepool {
        @try {
            NSMutableArray<VNFaceObservation*>* asked = [NSMutableArray array];
            std::vector<std::size_t> positions;
            VNImageRequestHandler* handler = nil;
            for (std::size_t i = 0; i < faces.size(); ++i) {
                if (!found(faces[i])) continue;
                handler = found(faces[i])->handler;
                [asked addObject:found(faces[i])->face];
                positions.push_back(i);
            }
            // With an empty list the requests would search for faces themselves.
            if (positions.empty()) return details;

            VNDetectFaceCaptureQualityRequest* quality =
                [[VNDetectFaceCaptureQualityRequest alloc] init];
            VNDetectFaceLandmarksRequest* landmarks = [[VNDetectFaceLandmarksRequest alloc] init];
            quality.inputFaceObservations = asked;
            landmarks.inputFaceObservations = asked;
            if (auto error = perform(handler, @[ quality, landmarks ])) {
                return std::unexpected(*std::move(error));
            }
            const CGSize size = CGSizeMake(image.width(), image.height());
            for (std::size_t i = 0; i < positions.size(); ++i) {
                if (i < quality.results.count) {
                    details.captureQualities[positions[i]] =
                        optionalFloat(quality.results[i].faceCaptureQuality);
                }
                VNFaceLandmarks2D* described =
                    i < landmarks.results.count ? landmarks.results[i].landmarks : nil;
                if (described) details.landmarks[positions[i]] = observation(described, size);
            }
            return details;
        } @catch (NSException* exception) {
            return std::unexpected(sentence(exception));
        }
    }
}

std::expected<std::vector<Rect>, std::string> VisionFaceVision::rectangles(
    const Bitmap& image, const RectangleRequest& wanted) {
    @autoreleasepool {
        @try {
            VNDetectRectanglesRequest* request = [[VNDetectRectanglesRequest alloc] init];
            request.minimumConfidence = static_cast<float>(wanted.minimumConfidence);
            request.minimumSize = static_cast<float>(wanted.minimumSize);
            request.maximumObservations = static_cast<NSUInteger>(wanted.maximumObservations);
            request.minimumAspectRatio = static_cast<float>(wanted.minimumAspectRatio);
            request.maximumAspectRatio = static_cast<float>(wanted.maximumAspectRatio);
            request.quadratureTolerance = static_cast<float>(wanted.quadratureToleranceDegrees);
            if (auto error = perform(requestHandler(image), @[ request ])) {
                return std::unexpected(*std::move(error));
            }
            std::vector<Rect> boxes;
            for (VNRectangleObservation* rectangle in request.results)
                boxes.push_back(rect(rectangle.boundingBox));
            return boxes;
        } @catch (NSException* exception) {
            return std::unexpected(sentence(exception));
        }
    }
}

}  // namespace marrowby
