// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Kit/CameraUseRegistry.h"
#include "UnlockCore/Platform/CaptureSession.h"
#include "UnlockCore/Platform/Imaging.h"
#include "UnlockCore/Platform/MainThread.h"
#include "UnlockCore/Platform/PlatformWords.h"
#include "UnlockCore/Platform/SystemClock.h"
#include "UnlockCore/Platform/WorkQueues.h"
#include "UnlockCore/Recognition/CameraFrame.h"

#include <expected>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace marrowby {

/// A camera the user can choose.
struct CameraDevice {
    /// The system-wide unique ID.
    std::string id;
    /// In the user's language.
    std::string name;

    friend bool operator==(const CameraDevice&, const CameraDevice&) = default;
};

namespace cameraerror {

struct CannotOpen {
    std::string reason;
    friend bool operator==(const CannotOpen&, const CannotOpen&) = default;
};
struct NotAllowed {
    friend bool operator==(const NotAllowed&, const NotAllowed&) = default;
};
struct NoCamera {
    friend bool operator==(const NoCamera&, const NoCamera&) = default;
};

}  // namespace cameraerror

struct CameraError
    : std::variant<cameraerror::CannotOpen, cameraerror::NotAllowed, cameraerror::NoCamera> {
    using CannotOpen = cameraerror::CannotOpen;
    using NotAllowed = cameraerror::NotAllowed;
    using NoCamera = cameraerror::NoCamera;
    using variant::variant;
};

[[nodiscard]] std::string description(const CameraError& error, const PlatformWords& words);

/// One capture session on one camera: starts and stops it, and makes a CameraFrame of every
/// picture. Main thread, except that frames are made and handed over on its own serial queue. A
/// frame that is being made while the manager stops or is destroyed is dropped; a call of `onFrame`
/// that has begun runs to its end.
class CameraManager {
  public:
    enum class Permission { notDetermined, granted, denied, restricted };

    /// What a camera was asked for; pixels.
    struct Format {
        std::int64_t width = 0;
        std::int64_t height = 0;
        /// Per second; nothing where the camera keeps its own pace.
        std::optional<double> frameRate;
        friend bool operator==(const Format&, const Format&) = default;
    };
    struct Opened {
        CameraDevice device;
        /// Nothing where it has none to choose from, or another process holds its configuration.
        std::optional<Format> format;
    };

    /// Everything here outlives the manager and its queue's last work.
    struct Services {
        WorkQueues& queues;
        MainThread& mainThread;
        const SystemClock& clock;
        const Imaging& imaging;
        CameraUseRegistry& registry;
    };

    /// `workingLongEdge`: the longest side of a working image, in pixels.
    CameraManager(std::shared_ptr<CaptureSession> session, const Services& services,
                  double workingLongEdge);
    ~CameraManager();
    CameraManager(const CameraManager&) = delete;
    CameraManager& operator=(const CameraManager&) = delete;

    [[nodiscard]] static Permission permission(const CaptureSession& session);
    [[nodiscard]] Permission permission() const;
    /// Asks the user where the system does so; the answer comes on the main thread.
    void requestAccess(std::function<void(bool)> reply);

    [[nodiscard]] static std::vector<CameraDevice> availableCameras(const CaptureSession& session);

    /// Opens the camera with this unique ID, or the default one where there is none such, and
    /// returns before it runs.
    [[nodiscard]] std::expected<void, CameraError> start(
        const std::optional<std::string>& cameraID);
    /// The camera of the last start, while it is attached. Main thread.
    [[nodiscard]] std::optional<Opened> opened() const {
        return input_ ? std::optional(opened_) : std::nullopt;
    }
    /// No frame is kept or handed over after this. Returns before the camera has stopped.
    void stop();

    /// Called on the queue for every frame; pictures that come meanwhile are dropped.
    void setOnFrame(std::function<void(const CameraFrame&)> onFrame);

    /// The newest frame since the last start. Any thread, as is isRunning().
    [[nodiscard]] std::optional<CameraFrame> latestFrame() const;
    [[nodiscard]] bool isRunning() const;

  private:
    class Delivery;
    class DeviceLock;
    struct Claim;

    [[nodiscard]] std::optional<CaptureDeviceDescription> chooseDevice(
        const std::optional<std::string>& cameraID) const;
    /// Gives the lock under which the format was set, if it was.
    [[nodiscard]] std::expected<std::shared_ptr<DeviceLock>, CameraError> attach(
        const CaptureDeviceDescription& device);
    void detach();
    [[nodiscard]] static std::pair<std::shared_ptr<DeviceLock>, std::optional<Format>> applyFormat(
        const std::shared_ptr<CaptureInput>& input);

    std::shared_ptr<CaptureSession> session_;
    Services services_;
    std::shared_ptr<WorkQueue> queue_;
    /// Shared with the queue's work; may outlive this.
    std::shared_ptr<Delivery> delivery_;
    std::shared_ptr<Claim> claim_;
    /// The queue's work may keep it longer.
    std::shared_ptr<CaptureInput> input_;
    /// Of that input.
    Opened opened_;
    bool configured_ = false;
};

}  // namespace marrowby
