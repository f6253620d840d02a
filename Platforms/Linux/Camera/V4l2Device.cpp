// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/Camera/V4l2Device.h"

#include "Platforms/Linux/Camera/V4l2Converter.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <utility>

#include <linux/videodev2.h>
#include <poll.h>

namespace marrowby {

namespace {

constexpr std::uint32_t capture = V4L2_BUF_TYPE_VIDEO_CAPTURE;
/// Bounds the enumeration if a driver never ends a list.
constexpr std::uint32_t longestList = 256;
/// One being read, one being filled, two spare for a delay.
constexpr std::uint32_t bufferCount = 4;

struct Side {
    std::uint32_t width;
    std::uint32_t height;
};
constexpr std::array usualSizes{Side{320, 240}, Side{640, 360},  Side{640, 480},
                                Side{960, 540}, Side{1280, 720}, Side{1920, 1080}};

template <std::size_t size>
std::string text(const __u8 (&bytes)[size]) {  // NOLINT(modernize-avoid-c-arrays)
    const auto end = std::ranges::find(bytes, __u8{});
    return {std::begin(bytes), end};
}

/// Frames per second from seconds per frame; 0 if invalid.
double rate(const v4l2_fract& interval) {
    if (interval.numerator == 0 || interval.denominator == 0) return 0;
    return static_cast<double>(interval.denominator) / interval.numerator;
}

bool isOnStep(std::uint32_t value, std::uint32_t least, std::uint32_t most, std::uint32_t step) {
    return value >= least && value <= most && (step == 0 || (value - least) % step == 0);
}

std::vector<Side> sizes(const v4l2_frmsize_stepwise& range) {
    std::vector<Side> result;
    std::ranges::copy_if(usualSizes, std::back_inserter(result), [&](const Side& side) {
        return isOnStep(side.width, range.min_width, range.max_width, range.step_width) &&
               isOnStep(side.height, range.min_height, range.max_height, range.step_height);
    });
    if (result.empty()) result.push_back({range.max_width, range.max_height});
    return result;
}

}  // namespace

std::expected<std::unique_ptr<V4l2Device>, int> V4l2Device::open(std::shared_ptr<V4l2Calls> calls,
                                                                 const std::string& node) {
    const int file = calls->open(node);
    if (file < 0) return std::unexpected(-file);
    v4l2_capability capability{};
    if (const int result = calls->ioctl(file, VIDIOC_QUERYCAP, &capability); result < 0) {
        calls->close(file);
        return std::unexpected(-result);
    }
    const std::uint32_t can = (capability.capabilities & V4L2_CAP_DEVICE_CAPS) != 0
                                  ? capability.device_caps
                                  : capability.capabilities;
    if ((can & V4L2_CAP_VIDEO_CAPTURE) == 0 || (can & V4L2_CAP_STREAMING) == 0) {
        calls->close(file);
        return std::unexpected(ENOTTY);
    }
    return std::unique_ptr<V4l2Device>(
        new V4l2Device(std::move(calls), file, text(capability.card), text(capability.bus_info)));
}

V4l2Device::V4l2Device(std::shared_ptr<V4l2Calls> calls, int file, std::string card,
                       std::string bus)
    : calls_(std::move(calls)), file_(file), card_(std::move(card)), bus_(std::move(bus)) {}

V4l2Device::~V4l2Device() {
    if (isStreaming_) {
        std::uint32_t type = capture;
        (void)control(VIDIOC_STREAMOFF, type);
    }
    for (const auto memory : buffers_)
        calls_->unmap(memory);
    calls_->close(file_);
}

std::vector<V4l2Mode> V4l2Device::modes() const {
    std::vector<std::uint32_t> offered;
    for (std::uint32_t index = 0; index < longestList; ++index) {
        v4l2_fmtdesc description{};
        description.index = index;
        description.type = capture;
        if (control(VIDIOC_ENUM_FMT, description) < 0) break;
        offered.push_back(description.pixelformat);
    }
    std::vector<V4l2Mode> modes;
    for (const std::uint32_t pixelFormat : V4l2Converter::pixelFormats) {
        if (std::ranges::find(offered, pixelFormat) == offered.end()) continue;
        for (CaptureFormat& format : formats(pixelFormat))
            modes.push_back({pixelFormat, std::move(format)});
    }
    return modes;
}

std::vector<CaptureFormat> V4l2Device::formats(std::uint32_t pixelFormat) const {
    std::vector<Side> sides;
    for (std::uint32_t index = 0; index < longestList; ++index) {
        v4l2_frmsizeenum size{};
        size.index = index;
        size.pixel_format = pixelFormat;
        if (control(VIDIOC_ENUM_FRAMESIZES, size) < 0) break;
        if (size.type == V4L2_FRMSIZE_TYPE_DISCRETE) {
            sides.push_back({size.discrete.width, size.discrete.height});
            continue;
        }
        sides = sizes(size.stepwise);
        break;
    }
    if (sides.empty()) {
        // A source that dictates its size, such as an HDMI input, lists none.
        v4l2_format now{};
        now.type = capture;
        if (control(VIDIOC_G_FMT, now) >= 0)
            sides.push_back({now.fmt.pix.width, now.fmt.pix.height});
    }
    std::vector<CaptureFormat> result;
    result.reserve(sides.size());
    for (const auto& [width, height] : sides)
        result.push_back({width, height, rates(pixelFormat, width, height)});
    return result;
}

std::vector<FrameRateRange> V4l2Device::rates(std::uint32_t pixelFormat, std::uint32_t width,
                                              std::uint32_t height) const {
    std::vector<FrameRateRange> result;
    for (std::uint32_t index = 0; index < longestList; ++index) {
        v4l2_frmivalenum interval{};
        interval.index = index;
        interval.pixel_format = pixelFormat;
        interval.width = width;
        interval.height = height;
        if (control(VIDIOC_ENUM_FRAMEINTERVALS, interval) < 0) break;
        if (interval.type == V4L2_FRMIVAL_TYPE_DISCRETE) {
            const double only = rate(interval.discrete);
            if (only > 0) result.push_back({only, only});
            continue;
        }
        result.push_back({rate(interval.stepwise.max), rate(interval.stepwise.min)});
        break;
    }
    if (!result.empty()) return result;
    // A source that dictates its rate, such as an HDMI input, lists none but reports the current
    // one.
    v4l2_streamparm now{};
    now.type = capture;
    if (control(VIDIOC_G_PARM, now) < 0) return result;
    const double only = rate(now.parm.capture.timeperframe);
    if (only > 0) result.push_back({only, only});
    return result;
}

std::expected<void, int> V4l2Device::checkFree() const {
    // Freeing zero buffers fails with EBUSY while another file has buffers.
    v4l2_requestbuffers none{};
    none.type = capture;
    none.memory = V4L2_MEMORY_MMAP;
    if (const int result = control(VIDIOC_REQBUFS, none); result < 0)
        return std::unexpected(-result);
    return {};
}

std::expected<V4l2Layout, int> V4l2Device::start(const std::optional<V4l2Mode>& mode,
                                                 const std::optional<FrameDuration>& duration) {
    v4l2_format format{};
    format.type = capture;
    if (const int result = control(VIDIOC_G_FMT, format); result < 0)
        return std::unexpected(-result);
    if (mode) {
        v4l2_pix_format wanted{};
        wanted.width = static_cast<std::uint32_t>(mode->format.width);
        wanted.height = static_cast<std::uint32_t>(mode->format.height);
        wanted.pixelformat = mode->pixelFormat;
        wanted.field = V4L2_FIELD_NONE;
        format.fmt.pix = wanted;
    }
    if (const int result = control(VIDIOC_S_FMT, format); result < 0)
        return std::unexpected(-result);
    const v4l2_pix_format& got = format.fmt.pix;
    const V4l2Layout layout{got.pixelformat, static_cast<int>(got.width),
                            static_cast<int>(got.height), static_cast<int>(got.bytesperline)};
    if (!V4l2Converter::canRead(layout)) return std::unexpected(EINVAL);

    if (duration) {
        v4l2_streamparm pace{};
        pace.type = capture;
        pace.parm.capture.timeperframe = {static_cast<std::uint32_t>(duration->value),
                                          static_cast<std::uint32_t>(duration->timescale)};
        (void)control(VIDIOC_S_PARM, pace);
    }
    if (const auto mapped = mapBuffers(); !mapped) return std::unexpected(mapped.error());
    std::uint32_t type = capture;
    if (const int result = control(VIDIOC_STREAMON, type); result < 0)
        return std::unexpected(-result);
    isStreaming_ = true;
    return layout;
}

std::expected<void, int> V4l2Device::mapBuffers() {
    v4l2_requestbuffers request{};
    request.count = bufferCount;
    request.type = capture;
    request.memory = V4L2_MEMORY_MMAP;
    if (const int result = control(VIDIOC_REQBUFS, request); result < 0)
        return std::unexpected(-result);
    if (request.count == 0) return std::unexpected(ENOMEM);
    for (std::uint32_t index = 0; index < request.count; ++index) {
        v4l2_buffer buffer{};
        buffer.type = capture;
        buffer.memory = V4L2_MEMORY_MMAP;
        buffer.index = index;
        if (const int result = control(VIDIOC_QUERYBUF, buffer); result < 0)
            return std::unexpected(-result);
        const auto memory = calls_->map(file_, buffer.length, buffer.m.offset);
        if (memory.empty()) return std::unexpected(ENOMEM);
        buffers_.push_back(memory);
        if (const int result = queue(index); result < 0) return std::unexpected(-result);
    }
    return {};
}

int V4l2Device::queue(std::uint32_t index) const {
    v4l2_buffer buffer{};
    buffer.type = capture;
    buffer.memory = V4L2_MEMORY_MMAP;
    buffer.index = index;
    return control(VIDIOC_QBUF, buffer);
}

std::expected<void, int> V4l2Device::readNewest(
    int milliseconds, const std::function<void(std::span<const std::uint8_t>)>& show) {
    const int events = calls_->poll(file_, milliseconds);
    if (events < 0) return std::unexpected(-events);
    if ((events & (POLLERR | POLLHUP | POLLNVAL)) != 0) return std::unexpected(ENODEV);
    if ((events & POLLIN) == 0) return {};

    std::optional<v4l2_buffer> newest;
    const auto giveBack = [&]() -> int {
        if (!newest) return 0;
        return queue(std::exchange(newest, std::nullopt)->index);
    };
    // At most one pass over the buffers, even if the camera is faster than this loop.
    for (std::size_t i = 0; i < buffers_.size(); ++i) {
        v4l2_buffer buffer{};
        buffer.type = capture;
        buffer.memory = V4L2_MEMORY_MMAP;
        const int result = control(VIDIOC_DQBUF, buffer);
        // EIO: one lost frame.
        if (result == -EAGAIN || result == -EIO) break;
        if (result < 0) return std::unexpected(-result);
        if (buffer.index >= buffers_.size()) return std::unexpected(EINVAL);
        const bool isDamaged = (buffer.flags & V4L2_BUF_FLAG_ERROR) != 0;
        const int queued = isDamaged ? queue(buffer.index) : giveBack();
        if (queued < 0) return std::unexpected(-queued);
        if (!isDamaged) newest = buffer;
    }
    if (newest) {
        const auto memory = buffers_[newest->index];
        show(memory.first(std::min<std::size_t>(memory.size(), newest->bytesused)));
    }
    if (const int queued = giveBack(); queued < 0) return std::unexpected(-queued);
    return {};
}

}  // namespace marrowby
