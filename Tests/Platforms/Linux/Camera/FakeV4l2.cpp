// SPDX-License-Identifier: Apache-2.0
#include "Tests/Platforms/Linux/Camera/FakeV4l2.h"

#include <algorithm>
#include <cerrno>
#include <utility>

#include <linux/videodev2.h>
#include <poll.h>

namespace marrowby {

namespace {

constexpr std::uint32_t webcam = V4L2_CAP_VIDEO_CAPTURE | V4L2_CAP_STREAMING;

template <typename Argument>
Argument& as(void* argument) {
    return *static_cast<Argument*>(argument);
}

int listFormats(const FakeV4l2::Camera& camera, v4l2_fmtdesc& format) {
    if (format.index >= camera.codings.size()) return -EINVAL;
    format.pixelformat = camera.codings[format.index].pixelFormat;
    return 0;
}

const FakeV4l2::Coding* coding(const FakeV4l2::Camera& camera, std::uint32_t pixelFormat) {
    const auto found =
        std::ranges::find(camera.codings, pixelFormat, &FakeV4l2::Coding::pixelFormat);
    return found == camera.codings.end() ? nullptr : &*found;
}

int listSizes(const FakeV4l2::Camera& camera, v4l2_frmsizeenum& size) {
    const auto* of = coding(camera, size.pixel_format);
    if (!of || size.index >= (of->isStepwise ? 1 : of->sizes.size())) return -EINVAL;
    const auto& first = of->sizes[size.index];
    if (of->isStepwise) {
        const auto& last = of->sizes.back();
        size.type = V4L2_FRMSIZE_TYPE_STEPWISE;
        size.stepwise = {first.width, last.width, 16, first.height, last.height, 16};
    } else {
        size.type = V4L2_FRMSIZE_TYPE_DISCRETE;
        size.discrete = {first.width, first.height};
    }
    return 0;
}

int listIntervals(const FakeV4l2::Camera& camera, v4l2_frmivalenum& interval) {
    const auto* of = coding(camera, interval.pixel_format);
    if (!of) return -EINVAL;
    if (of->isStepwise) {
        const auto& rates = of->sizes.back().rates;
        if (interval.index > 0 || rates.empty()) return -EINVAL;
        interval.type = V4L2_FRMIVAL_TYPE_STEPWISE;
        interval.stepwise = {{1, rates.back()}, {1, rates.front()}, {1, 1}};
        return 0;
    }
    const auto size = std::ranges::find_if(of->sizes, [&](const FakeV4l2::Size& s) {
        return s.width == interval.width && s.height == interval.height;
    });
    if (size == of->sizes.end() || interval.index >= size->rates.size()) return -EINVAL;
    interval.type = V4L2_FRMIVAL_TYPE_DISCRETE;
    interval.discrete = {1, size->rates[interval.index]};
    return 0;
}

void fill(v4l2_pix_format& format, const FakeV4l2::Camera& camera) {
    format.pixelformat = camera.pixelFormat;
    format.width = camera.width;
    format.height = camera.height;
    format.bytesperline = camera.pixelFormat == V4L2_PIX_FMT_YUYV   ? camera.width * 2
                          : camera.pixelFormat == V4L2_PIX_FMT_NV12 ? camera.width
                                                                    : 0;
    format.sizeimage = camera.width * camera.height * 2;
}

}  // namespace

FakeV4l2::Camera* FakeV4l2::find(const std::string& node) {
    const auto found = std::ranges::find_if(
        cameras, [&](const Camera& camera) { return camera.isPlugged && camera.node == node; });
    return found == cameras.end() ? nullptr : &*found;
}

std::vector<V4l2Calls::Node> FakeV4l2::nodes() {
    std::vector<Node> nodes;
    for (const Camera& camera : cameras) {
        if (camera.isPlugged)
            nodes.push_back({.path = camera.node, .inode = 1, .changedAt = camera.changes});
    }
    return nodes;
}

bool FakeV4l2::mayOpen(const std::string& node) {
    const Camera* camera = find(node);
    return camera && camera->isAllowed;
}

int FakeV4l2::open(const std::string& node) {
    Camera* camera = find(node);
    if (!camera) return -ENOENT;
    if (!camera->isAllowed) return -EACCES;
    ++camera->openFiles;
    ++camera->openings;
    files_[++lastFile_].camera = camera;
    return lastFile_;
}

void FakeV4l2::close(int file) {
    const auto found = files_.find(file);
    if (found == files_.end()) {
        violations.emplace_back("closed what is not open");
        return;
    }
    --found->second.camera->openFiles;
    files_.erase(found);
}

int FakeV4l2::ioctl(int file, unsigned long request, void* argument) {
    const auto found = files_.find(file);
    if (found == files_.end()) return -EBADF;
    Camera& camera = *found->second.camera;
    if (!camera.isPlugged) return -ENODEV;
    if (const auto fault = camera.faults.find(request); fault != camera.faults.end())
        return -fault->second;
    return control(found->second, request, argument);
}

int FakeV4l2::control(File& file, unsigned long request, void* argument) {
    Camera& camera = *file.camera;
    switch (request) {
        case VIDIOC_QUERYCAP: {
            auto& capability = as<v4l2_capability>(argument);
            std::ranges::copy(camera.card, std::begin(capability.card));
            std::ranges::copy(camera.bus, std::begin(capability.bus_info));
            // Capabilities of the whole device; this node has only some of them.
            capability.capabilities = webcam | V4L2_CAP_DEVICE_CAPS | V4L2_CAP_META_CAPTURE;
            capability.device_caps = camera.capabilities == 0 ? webcam : camera.capabilities;
            return 0;
        }
        case VIDIOC_ENUM_FMT:
            return listFormats(camera, as<v4l2_fmtdesc>(argument));
        case VIDIOC_ENUM_FRAMESIZES:
            return listSizes(camera, as<v4l2_frmsizeenum>(argument));
        case VIDIOC_ENUM_FRAMEINTERVALS:
            return listIntervals(camera, as<v4l2_frmivalenum>(argument));
        case VIDIOC_G_PARM:
            as<v4l2_streamparm>(argument).parm.capture.timeperframe = {1, 24};
            return 0;
        case VIDIOC_S_PARM:
            camera.interval = as<v4l2_streamparm>(argument).parm.capture.timeperframe.denominator;
            return 0;
        case VIDIOC_G_FMT:
            fill(as<v4l2_format>(argument).fmt.pix, camera);
            return 0;
        case VIDIOC_S_FMT: {
            if (camera.isTaken) return -EBUSY;
            auto& wanted = as<v4l2_format>(argument).fmt.pix;
            camera.pixelFormat = wanted.pixelformat;
            camera.width = wanted.width;
            camera.height = wanted.height;
            fill(wanted, camera);
            return 0;
        }
        case VIDIOC_REQBUFS: {
            if (camera.isTaken) return -EBUSY;
            const auto count = as<v4l2_requestbuffers>(argument).count;
            file.memory.assign(
                count, std::vector<std::uint8_t>(std::size_t{camera.width} * camera.height * 2));
            return 0;
        }
        case VIDIOC_QUERYBUF: {
            auto& buffer = as<v4l2_buffer>(argument);
            if (buffer.index >= file.memory.size()) return -EINVAL;
            buffer.length = static_cast<std::uint32_t>(file.memory[buffer.index].size());
            buffer.m.offset = buffer.index;
            return 0;
        }
        case VIDIOC_QBUF: {
            const auto index = as<v4l2_buffer>(argument).index;
            if (std::ranges::find(file.queued, index) != file.queued.end())
                violations.emplace_back("queued a buffer twice");
            file.queued.push_back(index);
            return 0;
        }
        case VIDIOC_DQBUF:
            return dequeue(file, argument);
        case VIDIOC_STREAMON:
            camera.isStreaming = true;
            return 0;
        case VIDIOC_STREAMOFF:
            camera.isStreaming = false;
            return 0;
        default:
            return -ENOTTY;
    }
}

int FakeV4l2::dequeue(File& file, void* argument) {
    auto& pictures = file.camera->pictures;
    if (pictures.empty() || file.queued.empty()) return -EAGAIN;
    auto& buffer = as<v4l2_buffer>(argument);
    buffer.index = file.queued.front();
    file.queued.pop_front();
    const Picture picture = std::move(pictures.front());
    pictures.pop_front();
    std::ranges::copy(picture.bytes, file.memory[buffer.index].begin());
    buffer.bytesused = static_cast<std::uint32_t>(picture.bytes.size());
    buffer.flags = picture.isMarkedDamaged ? V4L2_BUF_FLAG_ERROR : 0;
    return 0;
}

std::span<std::uint8_t> FakeV4l2::map(int file, std::size_t /*length*/, std::uint32_t offset) {
    ++mappedBuffers;
    return files_.at(file).memory.at(offset);
}

void FakeV4l2::unmap(std::span<std::uint8_t> /*memory*/) {
    --mappedBuffers;
}

int FakeV4l2::poll(int file, int /*milliseconds*/) {
    if (file < 0) {
        ++plainWaits;
        return 0;
    }
    const Camera& camera = *files_.at(file).camera;
    if (camera.pollsError) return POLLERR;
    // A lost device polls readable at once.
    return camera.pictures.empty() && camera.isPlugged ? 0 : POLLIN;
}

}  // namespace marrowby
