// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Platform/CaptureSession.h"

#include <algorithm>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace marrowby {

/// Made-up cameras and one session that keeps its rules: changes only between begin and commit, at
/// most one input, and the preset in place of the camera's format when it starts or stops while
/// nobody holds the configuration. Violations are recorded in `faults`. One thread, except that
/// samples may be delivered on another.
class FakeCaptureSession final : public CaptureSession {
  public:
    struct Camera {
        CaptureDeviceDescription description;
        CaptureDeviceType type = CaptureDeviceType::externalCamera;
        CapturePosition position = CapturePosition::unspecified;
        std::vector<CaptureFormat> formats = {};
        /// Another process holds its configuration.
        bool isBusy = false;
        int locks = 0;
        /// How often it was unplugged and returned; earlier inputs stay unusable.
        int plugs = 0;
        /// As configured.
        std::optional<std::size_t> activeFormat = std::nullopt;
        std::optional<FrameDuration> frameDuration = std::nullopt;
    };

    CaptureAuthorization answer = CaptureAuthorization::authorized;
    /// The user's answer.
    bool grantsAccess = true;
    /// In the discovery's order; the first is the default of any kind.
    std::vector<Camera> cameras;
    /// Makes the next inputs fail with this text.
    std::optional<std::string> inputFault;

    std::vector<std::string> faults;
    /// begin, commit, preset, output, add ID, remove ID, start, stop.
    std::vector<std::string> calls;
    CaptureOutputSettings settings;

    /// A sample of the attached camera, as the session would deliver it. Nothing comes out of a
    /// session that does not run, unless the sample was already under way.
    void deliver(std::shared_ptr<const SourceImage> image, bool wasUnderWay = false) {
        if ((wasUnderWay || running_) && onSample_) onSample_({std::move(image)});
    }
    [[nodiscard]] std::optional<std::string> attached() const {
        return input_ ? std::optional(input_->deviceID()) : std::nullopt;
    }
    [[nodiscard]] Camera& camera(const std::string& id) {
        return *std::ranges::find(cameras, id,
                                  [](const Camera& c) { return c.description.uniqueID; });
    }

    [[nodiscard]] CaptureAuthorization authorization() const override { return answer; }
    void requestAccess(std::function<void(bool)> reply) override {
        answer = grantsAccess ? CaptureAuthorization::authorized : CaptureAuthorization::denied;
        reply(grantsAccess);
    }

    [[nodiscard]] std::vector<CaptureDeviceDescription> discover(
        std::span<const CaptureDeviceType> types) const override {
        std::vector<CaptureDeviceDescription> found;
        for (const Camera& camera : cameras) {
            if (std::ranges::find(types, camera.type) != types.end()) {
                found.push_back(camera.description);
            }
        }
        return found;
    }
    [[nodiscard]] std::optional<CaptureDeviceDescription> device(
        const std::string& uniqueID) const override {
        return first([&](const Camera& c) { return c.description.uniqueID == uniqueID; });
    }
    [[nodiscard]] std::optional<CaptureDeviceDescription> defaultDevice(
        CaptureDeviceType type, CapturePosition position) const override {
        return first([&](const Camera& c) { return c.type == type && c.position == position; });
    }
    [[nodiscard]] std::optional<CaptureDeviceDescription> defaultDevice() const override {
        return first([](const Camera&) { return true; });
    }

    void beginConfiguration() override {
        note("begin", !configuring_);
        configuring_ = true;
    }
    void commitConfiguration() override {
        note("commit", configuring_);
        configuring_ = false;
    }
    void setPreset(CapturePreset /*preset*/) override { note("preset", configuring_); }
    void addOutput(const CaptureOutputSettings& wanted, std::shared_ptr<WorkQueue> /*queue*/,
                   std::function<void(const SampleBuffer&)> onSample) override {
        note("output", configuring_ && !onSample_);
        settings = wanted;
        onSample_ = std::move(onSample);
    }
    [[nodiscard]] std::expected<std::unique_ptr<CaptureInput>, std::string> makeInput(
        const std::string& deviceID) override {
        if (inputFault) return std::unexpected(*inputFault);
        return std::make_unique<Input>(*this, deviceID);
    }
    [[nodiscard]] bool addInput(CaptureInput& input) override {
        note("add " + input.deviceID(), configuring_ && !input_);
        input_ = &input;
        return true;
    }
    void removeInput(CaptureInput& input) override {
        note("remove " + input.deviceID(), configuring_ && input_ == &input);
        input_ = nullptr;
    }

    void start() override {
        note("start", !configuring_ && !running_);
        running_ = true;
        applyPreset();
    }
    void stop() override {
        note("stop", !configuring_ && running_);
        running_ = false;
        applyPreset();
    }
    [[nodiscard]] bool isRunning() const override { return running_; }

  private:
    class Input final : public CaptureInput {
      public:
        Input(FakeCaptureSession& session, std::string id)
            : session_(session), id_(std::move(id)), plugs_(session.camera(id_).plugs) {}
        [[nodiscard]] std::string deviceID() const override {
            const bool isThere = std::ranges::any_of(session_.cameras, [&](const Camera& camera) {
                return camera.description.uniqueID == id_ && camera.plugs == plugs_;
            });
            return isThere ? id_ : "";
        }
        [[nodiscard]] std::vector<CaptureFormat> formats() const override {
            return session_.camera(id_).formats;
        }
        [[nodiscard]] bool lockForConfiguration() override {
            if (deviceID().empty()) return false;
            Camera& camera = session_.camera(id_);
            if (!camera.isBusy) ++camera.locks;
            return !camera.isBusy;
        }
        void setActiveFormat(std::size_t index) override {
            if (!isLocked()) session_.faults.emplace_back("format without lock");
            session_.camera(id_).activeFormat = index;
        }
        void setFrameDuration(FrameDuration duration) override {
            if (!isLocked()) session_.faults.emplace_back("frame duration without lock");
            session_.camera(id_).frameDuration = duration;
        }
        void unlockForConfiguration() override {
            if (deviceID().empty()) return;
            if (!isLocked()) session_.faults.emplace_back("unlock without lock");
            --session_.camera(id_).locks;
        }

      private:
        [[nodiscard]] bool isLocked() const { return session_.camera(id_).locks > 0; }

        FakeCaptureSession& session_;
        const std::string id_;
        const int plugs_;
    };

    template <typename Condition>
    [[nodiscard]] std::optional<CaptureDeviceDescription> first(const Condition& condition) const {
        const auto found = std::ranges::find_if(cameras, condition);
        return found == cameras.end() ? std::nullopt : std::optional(found->description);
    }
    void applyPreset() {
        if (!input_ || input_->deviceID().empty()) return;
        Camera& attached = camera(input_->deviceID());
        if (attached.locks == 0) attached.activeFormat.reset();
    }
    void note(const std::string& call, bool isAllowed) {
        calls.push_back(call);
        if (!isAllowed) faults.push_back(call);
    }

    bool configuring_ = false;
    bool running_ = false;
    CaptureInput* input_ = nullptr;
    std::function<void(const SampleBuffer&)> onSample_;
};

}  // namespace marrowby
