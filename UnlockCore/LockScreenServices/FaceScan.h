#pragma once

#include "UnlockCore/Foundation/Time.h"
#include "UnlockCore/Foundation/UUID.h"
#include "UnlockCore/Liveness/AntiSpoofScoring.h"
#include "UnlockCore/Liveness/LivenessAnalyzer.h"
#include "UnlockCore/Liveness/LivenessFrame.h"
#include "UnlockCore/Liveness/LivenessMode.h"
#include "UnlockCore/Liveness/LivenessSnapshot.h"
#include "UnlockCore/Platform/FaceVision.h"
#include "UnlockCore/Platform/FourierTransform.h"
#include "UnlockCore/Platform/Imaging.h"
#include "UnlockCore/Platform/SystemClock.h"
#include "UnlockCore/Platform/WorkQueues.h"
#include "UnlockCore/Recognition/CameraFrame.h"
#include "UnlockCore/Recognition/FaceRecognition.h"
#include "UnlockCore/Recognition/FaceRecognitionError.h"
#include "UnlockCore/Recognition/FaceRecognizer.h"

#include <cstdint>
#include <expected>
#include <optional>
#include <set>

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

    /// With the lock screen's tuning and cues.
    explicit FaceScan(LivenessMode mode);
    /// With other cues.
    FaceScan(LivenessMode mode, std::set<LivenessCue> enabledCues);

    /// Takes the next frame. A face that reaches over the picture's edge, whose landmarks cannot be
    /// relied on or that the real-face model cannot score is left without a score, and liveness
    /// starts over: what was seen before does not speak for it. A denial stays.
    const Step& take(const CameraFrame& frame, const Services& services);

  private:
    struct Findings;
    [[nodiscard]] Findings study(const CameraFrame& frame, const Services& services) const;
    void follow(const FaceRecognition& recognition);
    [[nodiscard]] static LivenessFrame measure(const CameraFrame& frame, const DetectedFace& face,
                                               const Services& services);

    LivenessAnalyzer analyzer_;
    /// Names the followed face: the number of faces that this look has followed.
    UUID subject_;
    std::uint32_t subjectCount_ = 0;
    std::optional<Step> last_;
};

}  // namespace marrowby
