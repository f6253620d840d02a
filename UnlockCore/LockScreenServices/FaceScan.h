// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Foundation/Time.h"
#include "UnlockCore/Foundation/UUID.h"
#include "UnlockCore/Liveness/AntiSpoofScoring.h"
#include "UnlockCore/Liveness/DeviceBezelDetector.h"
#include "UnlockCore/Liveness/FrameRateEstimate.h"
#include "UnlockCore/Liveness/LivenessAnalyzer.h"
#include "UnlockCore/Liveness/LivenessEvaluator.h"
#include "UnlockCore/Liveness/LivenessFrame.h"
#include "UnlockCore/Liveness/LivenessMode.h"
#include "UnlockCore/Liveness/LivenessTuning.h"
#include "UnlockCore/Platform/FaceVision.h"
#include "UnlockCore/Platform/FourierTransform.h"
#include "UnlockCore/Platform/Imaging.h"
#include "UnlockCore/Platform/SystemClock.h"
#include "UnlockCore/Platform/WorkQueues.h"
#include "UnlockCore/Recognition/CameraFrame.h"
#include "UnlockCore/Recognition/FaceEmbedding.h"
#include "UnlockCore/Recognition/FaceRecognizer.h"

#include <cstdint>
#include <expected>
#include <optional>
#include <set>
#include <string>

namespace marrowby {

/// One scan: the face followed from frame to frame, and its liveness. Camera queue only.
class FaceScan {
  public:
    /// What one frame gave.
    struct Step {
        std::expected<FaceRecognition, FaceRecognitionError> recognition;
        /// After the frame.
        LivenessSnapshot liveness;
        /// An error, for the user. Such a frame never confirms.
        std::optional<std::string> fault;
        /// How long the frame took.
        TimeInterval duration{};
    };

    /// What a frame is measured with.
    struct Services {
        const FaceRecognizer& recognizer;
        AntiSpoofScoring& antiSpoof;
        FaceVision& vision;
        const Imaging& imaging;
        const FourierTransform& fourier;
        const SystemClock& clock;
        /// Measures liveness beside the recognition; null: after it.
        WorkQueue* helper = nullptr;
    };

    /// What one frame shows by itself.
    struct Findings {
        LivenessFrame liveness;
        /// As in a step.
        std::optional<std::string> fault;
        std::expected<FaceRecognition, FaceRecognitionError> recognition =
            std::unexpected<FaceRecognitionError>(FaceRecognitionError::NoFace{});
        /// A rectangle around the head, held up or not.
        std::optional<devicebezeldetector::Observation> rectangle = std::nullopt;
    };

    /// With the lock screen's tuning and cues.
    explicit FaceScan(LivenessMode mode);
    /// With other cues.
    FaceScan(LivenessMode mode, std::set<LivenessCue> enabledCues);

    /// Takes the next frame. One with the timestamp or the picture of the previous frame changes
    /// nothing. A frame of a burst, or with a fault, adds no score. The counts that decide follow
    /// the camera's pace.
    const Step& take(const CameraFrame& frame, const Services& services);
    /// The two halves of take(), for keeping findings and judging them again.
    [[nodiscard]] Findings study(const CameraFrame& frame, const Services& services) const;
    const Step& judge(Findings findings, Date at, TimeInterval duration = {});

    /// The tuning of the last step.
    [[nodiscard]] LivenessTuning tuning() const {
        return livenessTuning(mode_, pace_.framesPerSecond());
    }

  private:
    /// The followed face as last seen.
    struct Followed {
        Rect box;
        Embedding embedding;
        Date at;
        /// Missing from a frame since.
        bool wasMissed = false;
    };

    [[nodiscard]] bool isRepeated(const CameraFrame& frame) const;
    [[nodiscard]] Findings measure(const CameraFrame& frame, const DetectedFace& face,
                                   const Services& services) const;
    [[nodiscard]] bool isFollowed(const FaceRecognition& recognition, Date at) const;
    void follow(const FaceRecognition& recognition, Date at);

    LivenessMode mode_;
    LivenessAnalyzer analyzer_;
    FrameRateEstimate pace_;
    /// Without its source: the camera needs the buffer back.
    struct Taken {
        Bitmap image;
        Date at;
    };
    std::optional<Taken> lastFrame_;
    std::optional<Date> lastScoredAt_;
    std::optional<Followed> followed_;
    /// Identifies the followed face: how many this scan has followed.
    UUID subject_;
    std::uint32_t subjectCount_ = 0;
    std::optional<Step> last_;
};

}  // namespace marrowby
