// SPDX-License-Identifier: Apache-2.0
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
/// camera's queue, one at a time, and dropped while it is busy. The models are loaded when the
/// screen is locked or a scan starts, and given back ten minutes after the last of both. A model
/// that fails to load or fails on every frame ends the scan with its error; the next scan tries
/// again. A camera that starts but never delivers gives no callback at all.
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

    /// How long the models stay when the screen is unlocked and no scan runs.
    static constexpr TimeInterval keptFor{600};

    /// Whether the screen is locked: then the models are loaded ahead of the next scan, which
    /// reports a failure, and kept.
    void follow(bool isLocked);

    void start(ScanID scan, const ScanConfiguration& configuration, Callbacks callbacks) override;
    void stop() override;

  private:
    class Models;
    class Loop;
    struct Scan;

    void preload();
    void restLater();
    void finishLoading(const std::optional<std::string>& fault);
    void fail(std::string message);

    Services services_;
    CameraManager camera_;
    std::shared_ptr<Models> models_;
    bool isLoading_ = false;
    bool isLocked_ = false;
    /// Models were loaded, or that was tried, since they were last given back.
    bool areHeld_ = false;
    /// Gives them back; only while they are held, unlocked and not scanning.
    std::unique_ptr<MainThread::Timer> rest_;
    std::shared_ptr<Scan> scan_;
    WeakSelf<CameraFaceScanner> weakSelf_{this};
};

}  // namespace marrowby
