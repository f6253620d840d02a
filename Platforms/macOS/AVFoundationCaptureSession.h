// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Platform/CaptureSession.h"

#include <memory>

namespace marrowby {

/// AVFoundation's cameras and a session on one of them. The output’s queue must come from
/// DispatchWorkQueues: the system delivers there and drops frames while it is busy.
///
/// An interruption only pauses delivery, without any error. A reported error or an unplugged camera
/// ends the run; a camera that comes back is a new device under the same name. Starting or stopping
/// resets the device to the preset unless its configuration is locked. Starting or stopping while
/// another thread configures throws, and then does nothing; the start or stop that follows every
/// configuration takes effect. Requesting access without a usage description in the bundle ends the
/// process.
class AVFoundationCaptureSession final : public CaptureSession {
  public:
    AVFoundationCaptureSession();
    ~AVFoundationCaptureSession() override;
    AVFoundationCaptureSession(const AVFoundationCaptureSession&) = delete;
    AVFoundationCaptureSession& operator=(const AVFoundationCaptureSession&) = delete;

    [[nodiscard]] CaptureAuthorization authorization() const override;
    void requestAccess(std::function<void(bool)> reply) override;

    /// An iPhone counts as a Continuity camera only if the bundle opts in, else as built-in.
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
