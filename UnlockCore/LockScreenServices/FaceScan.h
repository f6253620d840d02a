#pragma once

#include "UnlockCore/Foundation/Time.h"
#include "UnlockCore/Foundation/UUID.h"
#include "UnlockCore/Liveness/AntiSpoofScoring.h"
#include "UnlockCore/Liveness/LivenessAnalyzer.h"
#include "UnlockCore/Liveness/LivenessMode.h"
#include "UnlockCore/Liveness/LivenessSnapshot.h"
#include "UnlockCore/Platform/SystemClock.h"
#include "UnlockCore/Recognition/CameraFrame.h"
#include "UnlockCore/Recognition/FaceRecognition.h"
#include "UnlockCore/Recognition/FaceRecognitionError.h"
#include "UnlockCore/Recognition/FaceRecognizer.h"

#include <cstdint>
#include <expected>
#include <optional>

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

    explicit FaceScan(LivenessMode mode);

    /// Takes the next frame. A face that the real-face model cannot score is left without a score.
    const Step& take(const CameraFrame& frame, const FaceRecognizer& recognizer,
                     AntiSpoofScoring& antiSpoof, const SystemClock& clock);

  private:
    void follow(const FaceRecognition& recognition);

    LivenessAnalyzer analyzer_;
    /// Names the followed face: the number of faces that this look has followed.
    UUID subject_;
    std::uint32_t subjectCount_ = 0;
    std::optional<Step> last_;
};

}  // namespace marrowby
