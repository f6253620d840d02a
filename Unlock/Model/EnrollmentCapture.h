#pragma once

#include "UnlockCore/Enrollment/EnrollmentSession.h"
#include "UnlockCore/Platform/FaceVision.h"
#include "UnlockCore/Platform/Imaging.h"
#include "UnlockCore/Platform/MainThread.h"
#include "UnlockCore/Recognition/CameraManager.h"
#include "UnlockCore/Recognition/FaceEmbedder.h"
#include "UnlockCore/Recognition/FaceIdentity.h"

#include <expected>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace marrowby {

/// One enrolment in front of the camera: recognises every frame on the camera's queue and guides
/// the session on the main thread. Main thread; destroying it ends the enrolment.
class EnrollmentCapture {
  public:
    /// All on the main thread. After `onDone` or `onFailed` nothing more comes.
    struct Callbacks {
        std::function<void(const EnrollmentSession&)> onProgress;
        /// All samples, in the order of the poses.
        std::function<void(std::vector<FaceSample>)> onDone;
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

    void observe(const EnrollmentFrame& frame, Date time);
    void fail(std::string sentence);

    Services services_;
    Callbacks callbacks_;
    std::optional<EnrollmentSession> session_;
    bool isOver_ = false;
    /// Since the heartbeat's last beat.
    bool hasSeenFrame_ = false;
    /// A camera that vanishes only stops sending.
    std::unique_ptr<MainThread::Timer> heartbeat_;
    /// Ends the callbacks that are still on their way when this goes.
    std::shared_ptr<EnrollmentCapture*> self_;
};

}  // namespace marrowby
