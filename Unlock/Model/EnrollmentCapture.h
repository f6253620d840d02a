// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Enrollment/EnrollmentSession.h"
#include "UnlockCore/Foundation/Bitmap.h"
#include "UnlockCore/Foundation/WeakSelf.h"
#include "UnlockCore/Platform/FaceVision.h"
#include "UnlockCore/Platform/Imaging.h"
#include "UnlockCore/Platform/MainThread.h"
#include "UnlockCore/Recognition/CameraManager.h"
#include "UnlockCore/Recognition/FaceEmbedder.h"
#include "UnlockCore/Recognition/FaceIdentity.h"
#include "UnlockCore/Recognition/FaceRecognizer.h"

#include <cstdint>
#include <expected>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace marrowby {

/// The samples of one enrolment and the model that made them.
struct CapturedFace {
    /// In the order of the poses.
    std::vector<FaceSample> samples;
    std::string modelIdentifier;
    std::int64_t dimension = 0;
};

/// One enrolment: recognises every frame on the camera's queue and advances the session on the main
/// thread. Main thread; destroying it ends the enrolment.
class EnrollmentCapture {
  public:
    /// All on the main thread. After `onDone` or `onFailed` nothing more comes.
    struct Callbacks {
        std::function<void(const EnrollmentSession&, const Bitmap& picture)> onProgress;
        std::function<void(CapturedFace)> onDone;
        /// The sentence for the user.
        std::function<void(std::string)> onFailed;
    };
    struct Services {
        CameraManager& camera;
        FaceVision& vision;
        const Imaging& imaging;
        MainThread& mainThread;
        std::shared_ptr<FaceEmbedder> embedder;
    };

    EnrollmentCapture(Services services, Callbacks callbacks);
    ~EnrollmentCapture();
    EnrollmentCapture(const EnrollmentCapture&) = delete;
    EnrollmentCapture& operator=(const EnrollmentCapture&) = delete;

    [[nodiscard]] std::expected<void, CameraError> start(
        const std::optional<std::string>& cameraID);

  private:
    class Recognition;
    using Seen = std::expected<EnrollmentFrame, FaceRecognitionError>;

    void take(const Seen& seen, const Bitmap& picture, Date time);
    void observe(const EnrollmentFrame& frame, const Bitmap& picture, Date time);
    void fail(std::string sentence);

    Services services_;
    Callbacks callbacks_;
    std::optional<EnrollmentSession> session_;
    bool isOver_ = false;
    /// Since the heartbeat's last beat.
    bool hasSeenFrame_ = false;
    /// A vanished camera gives no error, only no frames.
    std::unique_ptr<MainThread::Timer> heartbeat_;
    WeakSelf<EnrollmentCapture> weakSelf_{this};
};

}  // namespace marrowby
