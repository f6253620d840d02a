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

/// One look: the face it follows from frame to frame, and what is known of that face's liveness.
/// Used on the camera's queue only.
class FaceScan {
  public:
    /// What one frame gave.
    struct Step {
        std::expected<FaceRecognition, FaceRecognitionError> recognition;
        /// After the frame.
        LivenessSnapshot liveness;
        /// What did not work although a face, or the search for one, was there; for the user. Such
        /// a frame does not confirm.
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
        /// Measures while the face is recognised; without it that comes afterwards.
        WorkQueue* helper = nullptr;
    };

    /// What one frame shows by itself.
    struct Findings {
        LivenessFrame liveness;
        /// As a step has it.
        std::optional<std::string> fault;
        std::expected<FaceRecognition, FaceRecognitionError> recognition =
            std::unexpected<FaceRecognitionError>(FaceRecognitionError::NoFace{});
        /// Around the head, held up or not.
        std::optional<devicebezeldetector::Observation> rectangle = std::nullopt;
    };

    /// With the lock screen's tuning and cues.
    explicit FaceScan(LivenessMode mode);
    /// With other cues.
    FaceScan(LivenessMode mode, std::set<LivenessCue> enabledCues);

    /// Takes the next frame. One with the stamp or the picture of the frame before is that frame
    /// once more and changes nothing. A frame within a burst, or one that not all could be measured
    /// in, adds no score. The counts that decide follow the camera's pace.
    const Step& take(const CameraFrame& frame, const Services& services);
    /// The two halves of it, for who keeps what frames showed to judge it again.
    [[nodiscard]] Findings study(const CameraFrame& frame, const Services& services) const;
    const Step& judge(Findings findings, Date at, TimeInterval duration = {});

  private:
    /// The face that is followed, when it was last seen.
    struct Followed {
        Rect box;
        Embedding embedding;
        Date at;
        /// There were frames without it since.
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
    /// Without its source, which the camera wants back.
    struct Taken {
        Bitmap image;
        Date at;
    };
    std::optional<Taken> lastFrame_;
    std::optional<Date> lastScoredAt_;
    std::optional<Followed> followed_;
    /// Names the followed face: the number of faces that this look has followed.
    UUID subject_;
    std::uint32_t subjectCount_ = 0;
    std::optional<Step> last_;
};

}  // namespace marrowby
