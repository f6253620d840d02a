// SPDX-License-Identifier: Apache-2.0
#include "Unlock/Model/EnrollmentCapture.h"

#include "UnlockCore/Foundation/Phrase.h"
#include "UnlockCore/Recognition/FaceRecognizer.h"

#include <utility>

namespace marrowby {

namespace {

/// Pixels of the working image, whose long side is 640 at most. A face at arm's length from a
/// built-in camera is 150 to 250 wide; below this the 112-pixel crop would be enlarged.
constexpr double nearestFaceWidth = 80;

/// A slow camera needs three seconds for its first frame.
constexpr TimeInterval longestSilence{5};

EnrollmentFrame seenFace(FaceRecognition recognition) {
    if (recognition.face.boundingBox.width < nearestFaceWidth) return EnrollmentFrame::TooFar{};
    return EnrollmentFrame::Face{
        .yaw = recognition.face.yaw,
        .pitch = recognition.face.pitch,
        .quality = recognition.face.quality,
        .fivePointAligned = recognition.alignmentTier == AlignmentTier::fivePoint,
        .embedding = std::move(recognition.embedding)};
}

}  // namespace

/// Camera queue only.
class EnrollmentCapture::Recognition {
  public:
    explicit Recognition(const Services& services)
        : recognizer_(services.vision, services.imaging, services.embedder, 0) {}

    [[nodiscard]] Seen see(const CameraFrame& frame) {
        auto recognition = recognizer_.recognise(frame, previousFace_);
        if (recognition) {
            previousFace_ = recognition->face;
            return seenFace(*std::move(recognition));
        }
        previousFace_.reset();
        const FaceRecognitionError& fault = recognition.error();
        if (std::holds_alternative<FaceRecognitionError::NoFace>(fault) ||
            std::holds_alternative<FaceRecognitionError::CannotAlign>(fault) ||
            std::holds_alternative<FaceRecognitionError::CutOff>(fault)) {
            return EnrollmentFrame::NoFace{};
        }
        return std::unexpected(fault);
    }

  private:
    FaceRecognizer recognizer_;
    std::optional<DetectedFace> previousFace_;
};

EnrollmentCapture::EnrollmentCapture(Services services, Callbacks callbacks)
    : services_(std::move(services)), callbacks_(std::move(callbacks)) {}

EnrollmentCapture::~EnrollmentCapture() {
    services_.camera.setOnFrame({});
    services_.camera.stop();
    services_.vision.release();
}

std::expected<void, CameraError> EnrollmentCapture::start(
    const std::optional<std::string>& cameraID) {
    services_.camera.setOnFrame([recognition = std::make_shared<Recognition>(services_),
                                 take = weakSelf_.guarded(&EnrollmentCapture::take),
                                 &mainThread = services_.mainThread](const CameraFrame& frame) {
        mainThread.post([take, seen = recognition->see(frame), picture = frame.image,
                         time = frame.timestamp] { take(seen, picture, time); });
    });
    auto started = services_.camera.start(cameraID);
    if (started) {
        heartbeat_ = services_.mainThread.every(longestSilence, TimeInterval(0.5), [this] {
            if (!std::exchange(hasSeenFrame_, false))
                fail(translated("The camera stopped sending pictures."));
        });
    }
    return started;
}

void EnrollmentCapture::take(const Seen& seen, const Bitmap& picture, Date time) {
    if (seen) {
        observe(*seen, picture, time);
    } else {
        fail(description(seen.error()));
    }
}

void EnrollmentCapture::observe(const EnrollmentFrame& frame, const Bitmap& picture, Date time) {
    if (isOver_) return;
    hasSeenFrame_ = true;
    if (!session_) session_.emplace(time);
    session_->observe(frame, time);
    const auto weak = weakSelf_.handle();
    if (callbacks_.onProgress) callbacks_.onProgress(*session_, picture);
    if (!weak.get() || isOver_ || !session_->isDone()) return;
    isOver_ = true;
    services_.camera.stop();
    if (callbacks_.onDone)
        callbacks_.onDone({.samples = session_->samples(),
                           .modelIdentifier = services_.embedder->modelIdentifier(),
                           .dimension = services_.embedder->dimension()});
}

void EnrollmentCapture::fail(std::string sentence) {
    if (isOver_) return;
    isOver_ = true;
    services_.camera.stop();
    if (callbacks_.onFailed) callbacks_.onFailed(std::move(sentence));
}

}  // namespace marrowby
