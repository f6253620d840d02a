#pragma once

#include "Platforms/Linux/Camera/V4l2Calls.h"
#include "UnlockCore/Platform/CaptureSession.h"

#include <memory>

namespace marrowby {

/// The cameras of the kernel's V4L2 and a session on one of them. A running session reads on the
/// capture queue itself, between the queue's other work: of the pictures that came while the queue
/// was busy only the newest is delivered, and none is ever waiting there. A device is open only
/// while the session runs, and is found again by its place and name wherever its node is then. One
/// that another program holds is tried again until it is free; one that is lost ends the run.
class V4l2CaptureSession final : public CaptureSession {
  public:
    explicit V4l2CaptureSession(std::shared_ptr<V4l2Calls> calls);
    ~V4l2CaptureSession() override;
    V4l2CaptureSession(const V4l2CaptureSession&) = delete;
    V4l2CaptureSession& operator=(const V4l2CaptureSession&) = delete;

    /// Denied where there are video nodes and this user may open none of them.
    [[nodiscard]] CaptureAuthorization authorization() const override;
    /// Nobody is asked: answers at once what is so.
    void requestAccess(std::function<void(bool)> reply) override;

    /// The system does not tell built-in from external cameras: each is found under either type,
    /// and none is known to be at the front.
    [[nodiscard]] std::vector<CaptureDeviceDescription> discover(
        std::span<const CaptureDeviceType> types) const override;
    [[nodiscard]] std::optional<CaptureDeviceDescription> device(
        const std::string& uniqueID) const override;
    [[nodiscard]] std::optional<CaptureDeviceDescription> defaultDevice(
        CaptureDeviceType type, CapturePosition position) const override;
    /// The one with the lowest number.
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

    const std::shared_ptr<V4l2Calls> calls_;
    const std::shared_ptr<Stream> stream_;
    Input* input_ = nullptr;
};

}  // namespace marrowby
