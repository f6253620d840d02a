#pragma once

#include "Kit/CameraUseRegistry.h"
#include "UnlockCore/Engine/FaceScanning.h"
#include "UnlockCore/Foundation/WeakSelf.h"
#include "UnlockCore/Liveness/AntiSpoofScoring.h"
#include "UnlockCore/Platform/CaptureSession.h"
#include "UnlockCore/Platform/FaceVision.h"
#include "UnlockCore/Platform/FourierTransform.h"
#include "UnlockCore/Platform/Imaging.h"
#include "UnlockCore/Platform/MainThread.h"
#include "UnlockCore/Platform/PlatformWords.h"
#include "UnlockCore/Platform/SystemClock.h"
#include "UnlockCore/Platform/WorkQueues.h"
#include "UnlockCore/Recognition/CameraManager.h"
#include "UnlockCore/Recognition/FaceEmbedder.h"
#include "UnlockCore/Recognition/ModelError.h"

#include <expected>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace marrowby {

/// Scans the camera's frames for an enrolled, live face. Main thread; frames are processed on the
/// camera's queue, one at a time, and dropped while it is busy. Both models are loaded once and
/// kept. A model that fails to load or fails on every frame ends the scan with its error; the next
/// scan tries again. A camera that starts but never delivers gives no callback at all.
class CameraFaceScanner final : public FaceScanning {
  public:
    using LoadEmbedder =
        std::function<std::expected<std::shared_ptr<FaceEmbedder>, FaceModelError>()>;
    using LoadAntiSpoof =
        std::function<std::expected<std::shared_ptr<AntiSpoofScoring>, RealFaceModelError>()>;

    /// Longest side of the working image, pixels.
    static constexpr double workingLongEdge = 640;
    /// Pixels of that image; about 1.6 m from a laptop's camera.
    static constexpr double minimumFaceWidth = 44;

    /// Everything here outlives the scanner and its queues' last work.
    struct Services {
        WorkQueues& queues;
        MainThread& mainThread;
        const SystemClock& clock;
        const Imaging& imaging;
        FaceVision& vision;
        const FourierTransform& fourier;
        CameraUseRegistry& registry;
        const PlatformWords& words;
    };

    /// The factories are called on a background queue, never two at once.
    CameraFaceScanner(std::shared_ptr<CaptureSession> session, const Services& services,
                      LoadEmbedder loadEmbedder, LoadAntiSpoof loadAntiSpoof);
    ~CameraFaceScanner() override;
    CameraFaceScanner(const CameraFaceScanner&) = delete;
    CameraFaceScanner& operator=(const CameraFaceScanner&) = delete;

    /// Loads the models ahead of the first scan. A failure is reported by the next scan.
    void preload();

    void start(ScanID scan, const ScanConfiguration& configuration, Callbacks callbacks) override;
    void stop() override;

  private:
    class Models;
    class Loop;
    struct Scan;

    void finishLoading(const std::optional<std::string>& fault);
    void fail(std::string message);

    Services services_;
    CameraManager camera_;
    std::shared_ptr<Models> models_;
    bool isLoading_ = false;
    std::shared_ptr<Scan> scan_;
    WeakSelf<CameraFaceScanner> weakSelf_{this};
};

}  // namespace marrowby
