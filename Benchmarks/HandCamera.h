// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Platform/CaptureSession.h"

#include <memory>
#include <string>
#include <utility>

namespace marrowby {

/// A camera that delivers one picture on demand. Main thread; delivers on the capture queue.
class HandCamera final : public CaptureSession {
  public:
    /// Delivered on the capture queue.
    void show(std::shared_ptr<const SourceImage> picture) {
        queue_->async([this, picture = std::move(picture)] { onSample_(SampleBuffer{picture}); });
    }

    [[nodiscard]] CaptureAuthorization authorization() const override {
        return CaptureAuthorization::authorized;
    }
    void requestAccess(std::function<void(bool)> reply) override { reply(true); }
    [[nodiscard]] std::vector<CaptureDeviceDescription> discover(
        std::span<const CaptureDeviceType> /*types*/) const override {
        return {*defaultDevice()};
    }
    [[nodiscard]] std::optional<CaptureDeviceDescription> device(
        const std::string& /*uniqueID*/) const override {
        return std::nullopt;
    }
    [[nodiscard]] std::optional<CaptureDeviceDescription> defaultDevice(
        CaptureDeviceType /*type*/, CapturePosition /*position*/) const override {
        return std::nullopt;
    }
    [[nodiscard]] std::optional<CaptureDeviceDescription> defaultDevice() const override {
        return CaptureDeviceDescription{"hand", "Hand camera"};
    }
    void beginConfiguration() override {}
    void commitConfiguration() override {}
    void setPreset(CapturePreset /*preset*/) override {}
    void addOutput(const CaptureOutputSettings& /*settings*/, std::shared_ptr<WorkQueue> queue,
                   std::function<void(const SampleBuffer&)> onSample) override {
        queue_ = std::move(queue);
        onSample_ = std::move(onSample);
    }
    [[nodiscard]] std::expected<std::unique_ptr<CaptureInput>, std::string> makeInput(
        const std::string& /*deviceID*/) override {
        return std::make_unique<Input>();
    }
    [[nodiscard]] bool addInput(CaptureInput& /*input*/) override { return true; }
    void removeInput(CaptureInput& /*input*/) override {}
    void start() override {}
    void stop() override {}
    [[nodiscard]] bool isRunning() const override { return true; }

  private:
    class Input final : public CaptureInput {
      public:
        [[nodiscard]] std::string deviceID() const override { return "hand"; }
        [[nodiscard]] std::vector<CaptureFormat> formats() const override { return {}; }
        [[nodiscard]] bool lockForConfiguration() override { return true; }
        void setActiveFormat(std::size_t /*index*/) override {}
        void setFrameDuration(FrameDuration /*duration*/) override {}
        void unlockForConfiguration() override {}
    };

    std::shared_ptr<WorkQueue> queue_;
    std::function<void(const SampleBuffer&)> onSample_;
};

}  // namespace marrowby
