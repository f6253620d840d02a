// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Platforms/Linux/Camera/V4l2Calls.h"
#include "UnlockCore/Platform/CaptureSession.h"

#include <cstdint>
#include <expected>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace marrowby {

/// One of a camera's formats: pixel format (fourcc) and size.
struct V4l2Mode {
    std::uint32_t pixelFormat = 0;
    CaptureFormat format;
};

struct V4l2Layout {
    std::uint32_t pixelFormat = 0;
    int width = 0;
    int height = 0;
    /// Of the first plane; 0 for compressed formats.
    int bytesPerRow = 0;
};

/// An open video node; closed by the destructor. One thread at a time. Errors are errno values.
/// https://docs.kernel.org/userspace-api/media/v4l/v4l2.html
class V4l2Device {
  public:
    /// ENOTTY for a node without single-planar streaming capture.
    [[nodiscard]] static std::expected<std::unique_ptr<V4l2Device>, int> open(
        std::shared_ptr<V4l2Calls> calls, const std::string& node);
    ~V4l2Device();
    V4l2Device(const V4l2Device&) = delete;
    V4l2Device& operator=(const V4l2Device&) = delete;

    [[nodiscard]] const std::string& card() const { return card_; }
    /// Bus position, as the driver reports it.
    [[nodiscard]] const std::string& bus() const { return bus_; }

    /// The convertible modes, cheapest format first; usual sizes for a camera that takes any.
    [[nodiscard]] std::vector<V4l2Mode> modes() const;
    /// EBUSY while another program streams.
    [[nodiscard]] std::expected<void, int> checkFree() const;

    /// Starts streaming, once. Without a mode the device keeps its own; the driver may ignore the
    /// rate.
    [[nodiscard]] std::expected<V4l2Layout, int> start(const std::optional<V4l2Mode>& mode,
                                                       const std::optional<FrameDuration>& rate);
    /// Waits at most `milliseconds` for frames and passes the newest undamaged one to `show`; the
    /// bytes are valid during that call. An error means that the device is gone.
    [[nodiscard]] std::expected<void, int> readNewest(
        int milliseconds, const std::function<void(std::span<const std::uint8_t>)>& show);

  private:
    V4l2Device(std::shared_ptr<V4l2Calls> calls, int file, std::string card, std::string bus);

    template <typename Argument>
    [[nodiscard]] int control(unsigned long request, Argument& argument) const {
        return calls_->ioctl(file_, request, &argument);
    }
    [[nodiscard]] std::vector<CaptureFormat> formats(std::uint32_t pixelFormat) const;
    [[nodiscard]] std::vector<FrameRateRange> rates(std::uint32_t pixelFormat, std::uint32_t width,
                                                    std::uint32_t height) const;
    [[nodiscard]] std::expected<void, int> mapBuffers();
    [[nodiscard]] int queue(std::uint32_t index) const;

    const std::shared_ptr<V4l2Calls> calls_;
    const int file_;
    const std::string card_;
    const std::string bus_;
    std::vector<std::span<std::uint8_t>> buffers_;
    bool isStreaming_ = false;
};

}  // namespace marrowby
