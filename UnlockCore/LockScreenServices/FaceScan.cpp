// SPDX-License-Identifier: Apache-2.0
#include "UnlockCore/LockScreenServices/FaceScan.h"

#include "UnlockCore/Foundation/Fatal.h"
#include "UnlockCore/Liveness/DeviceBezelDetector.h"
#include "UnlockCore/Liveness/LivenessTuning.h"
#include "UnlockCore/Liveness/Planarity.h"
#include "UnlockCore/Liveness/RGBPixels.h"
#include "UnlockCore/Liveness/ScreenCues.h"
#include "UnlockCore/Platform/WorkQueues.h"
#include "UnlockCore/Recognition/FaceEmbedding.h"
#include "UnlockCore/Recognition/FaceMatcher.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>
#include <variant>

namespace marrowby {

namespace {

/// Long enough for a slow head turn, and for the scores of a camera of 5 frames a second that loses
/// every third.
constexpr TimeInterval livenessWindow{3};

/// Two frames of a slow camera. A face that was missing for longer counts as another one.
constexpr TimeInterval longestMiss{0.7};

/// Glare and moire are measured on at most so many source pixels of the face, plus a margin: bounds
/// their cost.
constexpr double screenCuesFace = 344;
/// Scales used in turn: a screen's pixel grid gives moire at some sizes only. Of 24 monitors 16
/// were detected at full size, 19 at one of these.
constexpr std::array screenCuesScales{1.0, 0.8, 0.64};
/// Pixels of the shorter side that moire needs.
constexpr double leastForMoire = 160;

/// The picture for glare and moire.
std::optional<Bitmap> middleOfFace(const CameraFrame& frame, const Rect& box,
                                   const Imaging& imaging) {
    const double perPixel = frame.sourceSize.width / frame.image.width();
    const double width = std::min(box.width, screenCuesFace / perPixel);
    const double height = std::min(box.height, screenCuesFace / perPixel);
    const Point centre = box.centre();
    const auto turn = static_cast<std::size_t>(frame.id) % screenCuesScales.size();
    const double sourcePixels = perPixel * (1 + 2 * faceCropMargin);
    const double least = leastForMoire / (std::min(width, height) * sourcePixels);
    const double scale = std::min(std::max(screenCuesScales.at(turn), least), 1.0);
    return faceCrop(frame, {centre.x - width / 2, centre.y - height / 2, width, height},
                    std::max(width, height) * sourcePixels * scale, imaging);
}

/// No face, or none that could be aligned, is no fault.
bool isFault(const FaceRecognitionError& error) {
    return std::holds_alternative<FaceModelError>(error) ||
           std::holds_alternative<FaceRecognitionError::DetectionFailed>(error);
}

UUID numbered(std::uint32_t number) {
    UUID id;
    for (std::size_t i = 0; i < sizeof number; ++i) {
        id.bytes.at(id.bytes.size() - 1 - i) = static_cast<std::uint8_t>(number >> (8 * i));
    }
    return id;
}

}  // namespace

FaceScan::FaceScan(LivenessMode mode) : FaceScan(mode, enabledLivenessCues(mode)) {}

FaceScan::FaceScan(LivenessMode mode, std::set<LivenessCue> enabledCues)
    : mode_(mode),
      analyzer_(mode, livenessTuning(mode), planarityTuning(mode), std::move(enabledCues),
                livenessWindow) {}

const FaceScan::Step& FaceScan::take(const CameraFrame& frame, const Services& services) {
    if (last_ && isRepeated(frame)) return *last_;
    const Date began = services.clock.now();
    pace_.add(frame.timestamp);
    Findings findings = study(frame, services);
    lastFrame_ = Taken{frame.image, frame.timestamp};
    return judge(std::move(findings), frame.timestamp, services.clock.now() - began);
}

const FaceScan::Step& FaceScan::judge(Findings findings, Date at, TimeInterval duration) {
    // A frame that has just been taken.
    pace_.add(at);
    auto& [measured, fault, recognition, rectangle] = findings;
    if (recognition) {
        follow(*recognition, at);
        const DetectedFace& face = recognition->face;
        if (rectangle &&
            devicebezeldetector::isHeldUp(rectangle->rectangle, face.boundingBox, face.imageSize)) {
            measured.deviceOverlapFraction = rectangle->faceOverlapFraction;
        }
        if (measured.antiSpoof) lastScoredAt_ = at;
        analyzer_.retune(tuning());
        analyzer_.ingest(measured, subject_);
    } else if (followed_) {
        followed_->wasMissed = true;
    }
    last_.emplace(Step{.recognition = std::move(recognition),
                       .liveness = analyzer_.lastSnapshot(),
                       .fault = std::move(fault),
                       .duration = duration});
    return *last_;
}

bool FaceScan::isRepeated(const CameraFrame& frame) const {
    if (!lastFrame_) return false;
    const Bitmap& last = lastFrame_->image;
    const Bitmap& next = frame.image;
    return frame.timestamp == lastFrame_->at ||
           (last.width() == next.width() && last.height() == next.height() &&
            std::ranges::equal(last.bytes(), next.bytes()));
}

FaceScan::Findings FaceScan::study(const CameraFrame& frame, const Services& services) const {
    std::optional<DetectedFace> previousFace;
    if (last_ && last_->recognition) previousFace = last_->recognition->face;
    Findings findings;
    const auto face = services.recognizer.find(frame, previousFace);
    if (face) {
        std::expected<FaceRecognition, FaceRecognitionError> recognition =
            std::unexpected<FaceRecognitionError>(FaceRecognitionError::NoFace{});
        const auto recognise = [&] {
            recognition = services.recognizer.recogniseFound(frame, *face);
        };
        const auto measureLiveness = [&] { findings = measure(frame, *face, services); };
        if (services.helper) {
            runInParallel(*services.helper, measureLiveness, recognise);
        } else {
            recognise();
            if (recognition) measureLiveness();
        }
        findings.recognition = std::move(recognition);
    } else {
        findings.recognition = std::unexpected(face.error());
    }
    if (!findings.recognition && isFault(findings.recognition.error())) {
        findings.fault = description(findings.recognition.error());
    }
    return findings;
}

FaceScan::Findings FaceScan::measure(const CameraFrame& frame, const DetectedFace& face,
                                     const Services& services) const {
    Findings findings{.liveness = livenessFrame(face, frame.timestamp), .fault = std::nullopt};
    LivenessFrame& measured = findings.liveness;
    const Rect& box = face.boundingBox;
    if (const auto picture = middleOfFace(frame, box, services.imaging)) {
        const auto cues = ScreenCues::measure(*picture, services.imaging, services.fourier);
        measured.glare = cues.glare;
        measured.moire = cues.moire;
    }
    const auto sought =
        devicebezeldetector::detect(frame.image, devicebezeldetector::head(box), services.vision);
    if (!sought) {
        findings.fault = sought.error();
        return findings;
    }
    findings.rectangle = *sought;
    if (lastScoredAt_ && pace_.isBurst(*lastScoredAt_, frame.timestamp)) return findings;
    if (const auto pixels = RGBPixels::view(frame.image)) {
        if (const auto score = services.antiSpoof.score(*pixels, box)) {
            measured.antiSpoof = *score;
        } else {
            findings.fault = description(score.error());
        }
    }
    return findings;
}

/// The same face: its box meets the last one, and it is as similar as the loosest match.
bool FaceScan::isFollowed(const FaceRecognition& recognition, Date at) const {
    if (!followed_) return false;
    const TimeInterval gone = at - followed_->at;
    if (gone < TimeInterval(0) || (followed_->wasMissed && gone > longestMiss)) return false;
    return !intersection(followed_->box, recognition.face.boundingBox).isEmpty() &&
           faceembedding::cosine(followed_->embedding, recognition.embedding) >=
               facematcher::lowestThreshold;
}

void FaceScan::follow(const FaceRecognition& recognition, Date at) {
    if (!isFollowed(recognition, at)) {
        subjectCount_ = incremented(subjectCount_);
        subject_ = numbered(subjectCount_);
    }
    followed_ = Followed{recognition.face.boundingBox, recognition.embedding, at};
}

}  // namespace marrowby
