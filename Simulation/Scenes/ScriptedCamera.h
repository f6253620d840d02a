// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Platforms/Linux/Camera/PixelBuffer.h"
#include "Simulation/Scenes/Pacing.h"
#include "UnlockCore/Foundation/Mutex.h"
#include "UnlockCore/Foundation/Time.h"
#include "UnlockCore/Platform/CaptureSession.h"
#include "UnlockCore/Platform/SystemClock.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace marrowby {

/// Scripted cameras and one session on them. Each picture is drawn one ahead on the pacing's thread
/// and delivered on the capture queue; while one delivery waits, further pictures are discarded
/// undrawn. Members beyond CaptureSession's are for any thread. Destroying it waits for a running
/// delivery, so not from within one.
class ScriptedCamera final : public CaptureSession {
  public:
    /// One picture to be drawn.
    struct Shot {
        Date at;
        /// Since the camera gave its first picture: exposure settles.
        TimeInterval running{};
        TimeInterval frameTime{};
        int width = 0;
        int height = 0;
    };
    /// Draws what is in front of the camera, on the pacing's thread. Null loses the picture.
    using View = std::function<std::shared_ptr<const PixelBuffer>(const Shot&)>;

    struct Device {
        CaptureDeviceDescription description;
        CaptureDeviceType type = CaptureDeviceType::builtInWideAngleCamera;
        CapturePosition position = CapturePosition::front;
        /// Never empty, each with a frame rate; the first is active at first.
        std::vector<CaptureFormat> formats;
    };

    struct Counts {
        /// Handed to the queue.
        std::uint64_t sent = 0;
        /// Discarded because the queue was busy.
        std::uint64_t discarded = 0;
        friend bool operator==(const Counts&, const Counts&) = default;
    };

    /// The camera of most rehearsals: 640 x 480.
    [[nodiscard]] static Device builtInCamera(double picturesPerSecond = 15);

    /// `clock` outlives this.
    ScriptedCamera(std::vector<Device> devices, const SystemClock& clock,
                   StartPacing startPacing = startThreadPacing);
    ~ScriptedCamera() override;
    ScriptedCamera(const ScriptedCamera&) = delete;
    ScriptedCamera& operator=(const ScriptedCamera&) = delete;

    /// What every camera sees from its next picture on. Without a view: plain gray.
    void setView(View view);
    [[nodiscard]] Counts counts() const;

    [[nodiscard]] CaptureAuthorization authorization() const override {
        return CaptureAuthorization::authorized;
    }
    void requestAccess(std::function<void(bool)> reply) override { reply(true); }
    [[nodiscard]] std::vector<CaptureDeviceDescription> discover(
        std::span<const CaptureDeviceType> types) const override;
    [[nodiscard]] std::optional<CaptureDeviceDescription> device(
        const std::string& uniqueID) const override;
    [[nodiscard]] std::optional<CaptureDeviceDescription> defaultDevice(
        CaptureDeviceType type, CapturePosition position) const override;
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
    class Outlet;

    /// A device and how it is configured.
    struct Slot {
        Device device;
        std::size_t format = 0;
        TimeInterval frameTime{};
    };
    /// A picture drawn ahead, and what it was drawn for.
    struct Ahead {
        std::shared_ptr<const PixelBuffer> picture;
        Date at;
        std::uint64_t change = 0;
    };

    [[nodiscard]] const Slot* slot(std::string_view uniqueID) const REQUIRES(mutex_);
    [[nodiscard]] Slot* slot(std::string_view uniqueID) REQUIRES(mutex_);
    template <typename Fits>
    [[nodiscard]] std::optional<CaptureDeviceDescription> firstDevice(Fits&& fits) const;
    /// Shows one picture; the time until the next step.
    TimeInterval step();
    [[nodiscard]] std::unique_ptr<Pacing> takePacing();

    const SystemClock& clock_;
    const StartPacing startPacing_;
    const std::shared_ptr<Outlet> outlet_;

    // Used by the pacing's steps only.
    std::optional<Ahead> ahead_;
    std::optional<Date> firstPictureAt_;

    mutable Mutex mutex_;
    std::vector<Slot> slots_ GUARDED_BY(mutex_);
    View view_ GUARDED_BY(mutex_);
    /// Counts changes that invalidate the picture drawn ahead.
    std::uint64_t change_ GUARDED_BY(mutex_) = 0;
    bool isNewRun_ GUARDED_BY(mutex_) = true;
    const CaptureInput* input_ GUARDED_BY(mutex_) = nullptr;
    std::string inputID_ GUARDED_BY(mutex_);
    std::shared_ptr<WorkQueue> queue_ GUARDED_BY(mutex_);
    bool discardsLateFrames_ GUARDED_BY(mutex_) = true;
    Counts counts_ GUARDED_BY(mutex_);
    std::unique_ptr<Pacing> pacing_ GUARDED_BY(mutex_);
};

}  // namespace marrowby
