#include "UnlockCore/LockScreenServices/FaceScan.h"

#include "UnlockCore/Foundation/Fatal.h"
#include "UnlockCore/Liveness/LivenessFrame.h"
#include "UnlockCore/Liveness/LivenessTuning.h"
#include "UnlockCore/Liveness/RGBPixels.h"
#include "UnlockCore/Recognition/FaceEmbedding.h"
#include "UnlockCore/Recognition/FaceMatcher.h"

#include <cstddef>
#include <set>
#include <utility>

namespace marrowby {

namespace {

/// Several times what the real-face average needs, room for a slow head turn.
constexpr TimeInterval livenessWindow{3};

/// The cues that a look measures: the real-face model. The cues of single pictures (moire, glare,
/// device frame) and of motion (flat motion, head turn) are not measured here, so they neither deny
/// nor are asked for: with the head turn enabled and never measured, a strict look could not end
/// well.
std::set<LivenessCue> measuredCues() {
    return {LivenessCue::realFace};
}

/// From one frame to the next a face stays where its box still meets the last one, and goes on
/// looking like itself: the lowest similarity that counts as a match at all.
bool isSameFace(const FaceRecognition& last, const FaceRecognition& next) {
    return !intersection(last.face.boundingBox, next.face.boundingBox).isEmpty() &&
           faceembedding::cosine(last.embedding, next.embedding) >= facematcher::lowestThreshold;
}

UUID numbered(std::uint32_t number) {
    UUID id;
    for (std::size_t i = 0; i < sizeof number; ++i) {
        id.bytes.at(id.bytes.size() - 1 - i) = static_cast<std::uint8_t>(number >> (8 * i));
    }
    return id;
}

}  // namespace

FaceScan::FaceScan(LivenessMode mode)
    : analyzer_(mode, livenessTuning(mode), measuredCues(), livenessWindow) {}

const FaceScan::Step& FaceScan::take(const CameraFrame& frame, const FaceRecognizer& recognizer,
                                     AntiSpoofScoring& antiSpoof, const SystemClock& clock) {
    const Date began = clock.now();
    std::optional<DetectedFace> previousFace;
    if (last_ && last_->recognition) previousFace = last_->recognition->face;

    auto recognition = recognizer.recognise(frame, previousFace);
    if (recognition) {
        follow(*recognition);
        LivenessFrame measured = livenessFrame(recognition->face, frame.timestamp);
        if (const auto pixels = RGBPixels::view(frame.image)) {
            const auto score = antiSpoof.score(*pixels, recognition->face.boundingBox);
            if (score) measured.antiSpoof = *score;
        }
        analyzer_.ingest(measured, subject_);
    }
    last_.emplace(Step{.recognition = std::move(recognition),
                       .liveness = analyzer_.lastSnapshot(),
                       .duration = clock.now() - began});
    return *last_;
}

void FaceScan::follow(const FaceRecognition& recognition) {
    if (last_ && last_->recognition && isSameFace(*last_->recognition, recognition)) return;
    subjectCount_ = incremented(subjectCount_);
    subject_ = numbered(subjectCount_);
}

}  // namespace marrowby
