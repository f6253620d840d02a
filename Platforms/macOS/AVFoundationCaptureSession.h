#pragma once

#include "UnlockCore/Platform/CaptureSession.h"

#include <memory>

namespace marrowby {

/// The cameras of AVFoundation and a session on one of them. The output’s queue must be one of
/// DispatchWorkQueues: the system itself delivers there, and drops what comes while it is busy.
///
/// The system stops delivering without a word while something interrupts the camera, and goes on
/// afterwards. When it reports an error, or the camera is unplugged, the run ends; a camera that
/// comes back is another device to the system even though its name is the same. Starting or
/// stopping sets the device as the preset says unless its configuration is locked. Starting or
/// stopping while the other thread configures throws in the system and then does nothing; as every
/// configuration is followed by a start or a stop of its own, that one counts. Asking for access
/// without a usage sentence in the bundle ends the process.
class AVFoundationCaptureSession final : public CaptureSession {
  public:
    AVFoundationCaptureSession();
    ~AVFoundationCaptureSession() override;
    AVFoundationCaptureSession(const AVFoundationCaptureSession&) = delete;
    AVFoundationCaptureSession& operator=(const AVFoundationCaptureSession&) = delete;

    [[nodiscard]] CaptureAuthorization authorization() const override;
    void requestAccess(std::function<void(bool)> reply) override;

    /// An iPhone is a Continuity camera only to an application whose bundle asks to tell them
    /// apart, else a built-in one.
    [[nodiscard]] std::vector<CaptureDeviceDescription> discover(
        std::span<const CaptureDeviceType> types) const override;
    [[nodiscard]] std::optional<CaptureDeviceDescription> device(
        const std::string& uniqueID) const override;
    [[nodiscard]] std::optional<CaptureDeviceDescription> defaultDevice(
        CaptureDeviceType type, CapturePosition position) const override;
    [[nodiscard]] std::optional<CaptureDeviceDescription> defaultDevice() const override;

    void beginConfiguration() override;
    void commitConfiguration() override;
    void setPreset(CapturePreset preset) override;
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
    struct Session;

    const std::unique_ptr<Session> session_;
};

}  // namespace marrowby
