// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Foundation/Bitmap.h"
#include "UnlockCore/Platform/Imaging.h"
#include "UnlockCore/Platform/WorkQueues.h"

#include <cstddef>
#include <cstdint>
#include <expected>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace marrowby {

enum class CaptureAuthorization { notDetermined, restricted, denied, authorized, unknown };
enum class CaptureDeviceType { builtInWideAngleCamera, externalCamera, continuityCamera };
enum class CapturePosition { unspecified, front };
enum class CapturePreset { high };
/// The value is the format’s four-character code.
enum class CapturePixelFormat : std::uint32_t { bgra32 = bgra32Code };

struct CaptureDeviceDescription {
    std::string uniqueID;
    std::string localizedName;
    /// Delivers nothing for now, such as a camera in a closed lid.
    bool isSuspended = false;
    friend bool operator==(const CaptureDeviceDescription&,
                           const CaptureDeviceDescription&) = default;
};

/// Frames per second.
struct FrameRateRange {
    double minimum = 0;
    double maximum = 0;
};

struct CaptureFormat {
    std::int64_t width = 0;
    std::int64_t height = 0;
    std::vector<FrameRateRange> frameRates;
};

/// value / timescale seconds.
struct FrameDuration {
    std::int64_t value = 0;
    std::int32_t timescale = 1;
    friend bool operator==(const FrameDuration&, const FrameDuration&) = default;
};

/// One delivery of the output; the image may be missing.
struct SampleBuffer {
    std::shared_ptr<const SourceImage> image;
};

struct CaptureOutputSettings {
    CapturePixelFormat pixelFormat = CapturePixelFormat::bgra32;
    bool discardsLateFrames = true;
};

/// One camera attached to a session: its formats, and the device's configuration between lock and
/// unlock. A session that starts or stops sets the device as its preset says, except while the
/// configuration is locked. It is locked on the owner's thread or on the capture queue.
class CaptureInput {
  public:
    virtual ~CaptureInput() = default;
    /// Empty once the input is unusable, such as after the camera was unplugged.
    [[nodiscard]] virtual std::string deviceID() const = 0;
    /// In the device's order.
    [[nodiscard]] virtual std::vector<CaptureFormat> formats() const = 0;
    /// False when another process holds the configuration. Each success needs an unlock; locks of
    /// one device may overlap.
    [[nodiscard]] virtual bool lockForConfiguration() = 0;
    virtual void setActiveFormat(std::size_t index) = 0;
    /// Both the shortest and the longest time between frames.
    virtual void setFrameDuration(FrameDuration duration) = 0;
    virtual void unlockForConfiguration() = 0;
};

/// The system's cameras and one capture session on them. Everything but `start`, `stop` and
/// `isRunning` is called on the owner's thread, the first two of those on the owner's capture
/// queue, the last on any. A camera that vanishes simply stops delivering, and may end the run.
class CaptureSession {
  public:
    virtual ~CaptureSession() = default;

    [[nodiscard]] virtual CaptureAuthorization authorization() const = 0;
    /// Asks the user where the system does so; the answer comes on any thread.
    virtual void requestAccess(std::function<void(bool)> reply) = 0;

    /// In the discovery's order.
    [[nodiscard]] virtual std::vector<CaptureDeviceDescription> discover(
        std::span<const CaptureDeviceType> types) const = 0;
    [[nodiscard]] virtual std::optional<CaptureDeviceDescription> device(
        const std::string& uniqueID) const = 0;
    [[nodiscard]] virtual std::optional<CaptureDeviceDescription> defaultDevice(
        CaptureDeviceType type, CapturePosition position) const = 0;
    /// The default camera of any kind.
    [[nodiscard]] virtual std::optional<CaptureDeviceDescription> defaultDevice() const = 0;

    virtual void beginConfiguration() = 0;
    virtual void commitConfiguration() = 0;
    virtual void setPreset(CapturePreset preset) = 0;
    /// Adds the one output if the session accepts it. `onSample` is called on `queue`, one at a
    /// time.
    virtual void addOutput(const CaptureOutputSettings& settings, std::shared_ptr<WorkQueue> queue,
                           std::function<void(const SampleBuffer&)> onSample) = 0;
    /// The error is the system's own localized description.
    [[nodiscard]] virtual std::expected<std::unique_ptr<CaptureInput>, std::string> makeInput(
        const std::string& deviceID) = 0;
    /// False when the session does not accept it. The input must outlive its stay in the session.
    [[nodiscard]] virtual bool addInput(CaptureInput& input) = 0;
    virtual void removeInput(CaptureInput& input) = 0;

    virtual void start() = 0;
    virtual void stop() = 0;
    [[nodiscard]] virtual bool isRunning() const = 0;
};

}  // namespace marrowby
