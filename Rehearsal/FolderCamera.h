#pragma once

#include "Rehearsal/FrameFolder.h"
#include "Rehearsal/Scenes/Pacing.h"
#include "UnlockCore/Foundation/Mutex.h"
#include "UnlockCore/Platform/CaptureSession.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>

namespace marrowby {

/// The one camera of a rehearsal, which sees whatever sequence is put in front of it, at that
/// sequence's own size and rate. Pictures are read one ahead on the pacing's thread and delivered
/// on the capture queue; of deliveries that the queue has not come to, only one waits, the others
/// are discarded. What is not said by CaptureSession may be called from any thread. Destroying it
/// waits for a delivery in progress, so not from within one.
class FolderCamera final : public CaptureSession {
  public:
    /// What is in front of the camera.
    struct Scene {
        enum class AtEnd { loop, holdLastFrame };
        /// Without one, an empty room: plain gray.
        std::shared_ptr<const FrameFolder> sequence;
        AtEnd atEnd = AtEnd::loop;
        /// Goes on where it was when the session starts running again, rather than from its first
        /// frame.
        bool continues = false;
    };

    struct Counts {
        /// Handed to the queue.
        std::uint64_t sent = 0;
        /// Discarded because the queue was busy.
        std::uint64_t late = 0;
        std::uint64_t unreadable = 0;
        friend bool operator==(const Counts&, const Counts&) = default;
    };

    static constexpr const char* uniqueID = "rehearsal-camera";

    /// `onUnreadable` is told, on the pacing's thread, the sentence about each picture that
    /// couldn't be read.
    explicit FolderCamera(StartPacing startPacing = startThreadPacing,
                          std::function<void(const std::string& sentence)> onUnreadable = {});
    ~FolderCamera() override;
    FolderCamera(const FolderCamera&) = delete;
    FolderCamera& operator=(const FolderCamera&) = delete;

    /// Seen from its first frame on. The empty room has the size and rate of the sequence before
    /// it.
    void setScene(Scene scene);
    /// What the user has allowed; `authorized` at first.
    void setAuthorization(CaptureAuthorization authorization);
    /// Whether there is a camera at all.
    void setPlugged(bool isPlugged);
    /// Another program has the camera: no input can be made, for this reason.
    void setBusy(std::optional<std::string> reason);
    [[nodiscard]] Counts counts() const;

    [[nodiscard]] CaptureAuthorization authorization() const override;
    /// Who has not decided yet agrees.
    void requestAccess(std::function<void(bool)> reply) override;
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
    class Player;

    [[nodiscard]] CaptureFormat format() const;
    /// Shows one frame; the time until the next.
    TimeInterval step();
    [[nodiscard]] std::unique_ptr<Pacing> takePacing();

    const StartPacing startPacing_;
    const std::function<void(const std::string&)> onUnreadable_;
    const std::shared_ptr<Outlet> outlet_;
    // Of the pacing's steps alone.
    const std::unique_ptr<Player> player_;

    mutable Mutex mutex_;
    CaptureAuthorization authorization_ GUARDED_BY(mutex_) = CaptureAuthorization::authorized;
    bool isPlugged_ GUARDED_BY(mutex_) = true;
    std::optional<std::string> busyReason_ GUARDED_BY(mutex_);
    Scene scene_ GUARDED_BY(mutex_);
    bool isNewScene_ GUARDED_BY(mutex_) = true;
    bool isNewRun_ GUARDED_BY(mutex_) = true;
    int width_ GUARDED_BY(mutex_) = 480;
    int height_ GUARDED_BY(mutex_) = 360;
    double framesPerSecond_ GUARDED_BY(mutex_) = 15;
    const CaptureInput* input_ GUARDED_BY(mutex_) = nullptr;
    std::shared_ptr<WorkQueue> queue_ GUARDED_BY(mutex_);
    bool discardsLateFrames_ GUARDED_BY(mutex_) = true;
    Counts counts_ GUARDED_BY(mutex_);
    std::unique_ptr<Pacing> pacing_ GUARDED_BY(mutex_);
};

}  // namespace marrowby
