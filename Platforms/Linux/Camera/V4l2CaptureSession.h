// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Platforms/Linux/Camera/V4l2Calls.h"
#include "UnlockCore/Platform/CaptureSession.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace marrowby {

/// The V4L2 cameras and a session on one of them. A running session reads on the capture queue,
/// between the queue's other work; of the frames that came while the queue was busy it delivers
/// only the newest and queues none. The device is open only while the session runs, and is found by
/// bus position and name even if its node changes. A busy device is retried until it is free; a
/// lost one ends the run.
class V4l2CaptureSession final : public CaptureSession {
  public:
    struct Camera {
        CaptureDeviceDescription description;
        std::string node;
    };

    explicit V4l2CaptureSession(std::shared_ptr<V4l2Calls> calls);
    ~V4l2CaptureSession() override;
    V4l2CaptureSession(const V4l2CaptureSession&) = delete;
    V4l2CaptureSession& operator=(const V4l2CaptureSession&) = delete;

    /// Denied when there are video nodes and this user may open none.
    [[nodiscard]] CaptureAuthorization authorization() const override;
    /// There is no prompt on Linux: replies at once with the current state.
    void requestAccess(std::function<void(bool)> reply) override;

    /// V4L2 does not tell built-in from external cameras: each is returned for either type, with no
    /// known position. Here and below, devices are opened only when the nodes have changed.
    [[nodiscard]] std::vector<CaptureDeviceDescription> discover(
        std::span<const CaptureDeviceType> types) const override;
    [[nodiscard]] std::optional<CaptureDeviceDescription> device(
        const std::string& uniqueID) const override;
    [[nodiscard]] std::optional<CaptureDeviceDescription> defaultDevice(
        CaptureDeviceType type, CapturePosition position) const override;
    /// The camera with the lowest node number.
    [[nodiscard]] std::optional<CaptureDeviceDescription> defaultDevice() const override;

    void beginConfiguration() override {}
    void commitConfiguration() override {}
    void setPreset(CapturePreset /*preset*/) override {}
    void addOutput(const CaptureOutputSettings& settings, std::shared_ptr<WorkQueue> queue,
                   std::function<void(const SampleBuffer&)> onSample) override;
    [[nodiscard]] std::expected<std::unique_ptr<CaptureInput>, std::string> makeInput(
        const std::string& deviceID) override;
    [[nodiscard]] bool addInput(CaptureInput& input) override;
    void removeInput(CaptureInput& input) override;

    void start() override;
    void stop() override;
    [[nodiscard]] bool isRunning() const override;

  private:
    class Input;
    class Stream;

    /// What was found last, and among which nodes.
    struct Listing {
        std::vector<V4l2Calls::Node> nodes;
        std::vector<Camera> cameras;
    };

    /// Looks again only when the nodes have changed.
    [[nodiscard]] std::vector<Camera> listed() const;

    const std::shared_ptr<V4l2Calls> calls_;
    mutable std::optional<Listing> listing_;
    const std::shared_ptr<Stream> stream_;
    Input* input_ = nullptr;
};

}  // namespace marrowby
