#include "UnlockCore/LockScreenServices/FaceScan.h"

#include "UnlockCore/Foundation/Fatal.h"
#include "UnlockCore/Liveness/DeviceBezelDetector.h"
#include "UnlockCore/Liveness/LivenessTuning.h"
#include "UnlockCore/Liveness/PlanarityTuning.h"
#include "UnlockCore/Liveness/RGBPixels.h"
#include "UnlockCore/Liveness/ScreenCues.h"
#include "UnlockCore/Platform/RunBeside.h"
#include "UnlockCore/Recognition/FaceEmbedding.h"
#include "UnlockCore/Recognition/FaceMatcher.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>
#include <variant>

namespace marrowby {

namespace {

/// Several times what the real-face average needs, room for a slow head turn.
constexpr TimeInterval livenessWindow{3};

/// Glare and moire are sought in the middle of the face, so that their cost ends at a size: source
/// pixels, to which some room is added.
constexpr double screenCuesFace = 344;
/// How large that is drawn, in turn: a screen's pixels beat within reach of the spectrum at one
/// size and not at another. Of 24 monitors 16 showed at full size, 19 at one of these.
constexpr std::array screenCuesScales{1.0, 0.8, 0.64};
/// Moire needs as much of the shorter side.
constexpr double leastForMoire = 160;

/// From one frame to the next a face stays where its box still meets the last one, and goes on
/// looking like itself: the lowest similarity that counts as a match at all.
bool isSameFace(const FaceRecognition& last, const FaceRecognition& next) {
    return !intersection(last.face.boundingBox, next.face.boundingBox).isEmpty() &&
           faceembedding::cosine(last.embedding, next.embedding) >= facematcher::lowestThreshold;
}

/// A face that touches the picture's edge goes on beyond it.
bool isWhole(const Rect& box, const Size& picture) {
    constexpr double margin = 0.5;
    return box.x > margin && box.y > margin && box.maxX() < picture.width - margin &&
           box.maxY() < picture.height - margin;
}

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

UUID numbered(std::uint32_t number) {
    UUID id;
    for (std::size_t i = 0; i < sizeof number; ++i) {
        id.bytes.at(id.bytes.size() - 1 - i) = static_cast<std::uint8_t>(number >> (8 * i));
    }
    return id;
}

}  // namespace

/// What one frame shows by itself.
struct FaceScan::Findings {
    std::expected<FaceRecognition, FaceRecognitionError> recognition;
    LivenessFrame liveness;
};

FaceScan::FaceScan(LivenessMode mode) : FaceScan(mode, enabledLivenessCues(mode)) {}

FaceScan::FaceScan(LivenessMode mode, std::set<LivenessCue> enabledCues)
    : analyzer_(mode, livenessTuning(mode), planarityTuning(mode), std::move(enabledCues),
                livenessWindow) {}

const FaceScan::Step& FaceScan::take(const CameraFrame& frame, const Services& services) {
    const Date began = services.clock.now();
    auto [recognition, measured] = study(frame, services);
    if (recognition) {
        follow(*recognition);
        const bool isDenied =
            std::holds_alternative<LivenessDecision::Denied>(analyzer_.lastSnapshot().decision);
        if (!measured.antiSpoof && !isDenied) analyzer_.reset();
        analyzer_.ingest(measured, subject_);
    }
    last_.emplace(Step{.recognition = std::move(recognition),
                       .liveness = analyzer_.lastSnapshot(),
                       .duration = services.clock.now() - began});
    return *last_;
}

FaceScan::Findings FaceScan::study(const CameraFrame& frame, const Services& services) const {
    std::optional<DetectedFace> previousFace;
    if (last_ && last_->recognition) previousFace = last_->recognition->face;
    const auto face = services.recognizer.find(frame, previousFace);
    if (!face) return {std::unexpected(face.error()), {}};

    Findings findings{std::unexpected<FaceRecognitionError>(FaceRecognitionError::NoFace{}), {}};
    const auto recognise = [&] {
        findings.recognition = services.recognizer.recogniseFound(frame, *face);
    };
    const auto measureLiveness = [&] { findings.liveness = measure(frame, *face, services); };
    if (services.helper) {
        runBeside(*services.helper, measureLiveness, recognise);
    } else {
        recognise();
        if (findings.recognition) measureLiveness();
    }
    return findings;
}

LivenessFrame FaceScan::measure(const CameraFrame& frame, const DetectedFace& face,
                                const Services& services) {
    LivenessFrame measured = livenessFrame(face, frame.timestamp);
    const Rect& box = face.boundingBox;
    if (const auto picture = middleOfFace(frame, box, services.imaging)) {
        const auto cues = ScreenCues::measure(*picture, services.imaging, services.fourier);
        measured.glare = cues.glare;
        measured.moire = cues.moire;
    }
    if (const auto device = devicebezeldetector::detect(frame.image, box, services.vision)) {
        measured.deviceOverlapFraction = device->faceOverlapFraction;
    }
    if (!measured.hasReliableLandmarks || !isWhole(box, face.imageSize)) return measured;
    if (const auto pixels = RGBPixels::view(frame.image)) {
        if (const auto score = services.antiSpoof.score(*pixels, box)) measured.antiSpoof = *score;
    }
    return measured;
}

void FaceScan::follow(const FaceRecognition& recognition) {
    if (last_ && last_->recognition && isSameFace(*last_->recognition, recognition)) return;
    subjectCount_ = incremented(subjectCount_);
    subject_ = numbered(subjectCount_);
}

}  // namespace marrowby
