// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/Camera/V4l2CaptureSession.h"

#include "Platforms/Linux/Camera/V4l2Converter.h"
#include "Platforms/Linux/Camera/V4l2Device.h"
#include "UnlockCore/Foundation/Mutex.h"
#include "UnlockCore/Foundation/Phrase.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <system_error>
#include <utility>

namespace marrowby {

namespace {

/// Longest wait for a frame before the capture queue runs its other work.
constexpr int waitMilliseconds = 50;

using Camera = V4l2CaptureSession::Camera;

struct Search {
    std::vector<Camera> found;
    /// No node failed to answer, as it may while it wakes.
    bool isWhole = true;
};

std::string sentence(int error) {
    switch (error) {
        case EBUSY:
            return translated("another program is using it.");
        case ENODEV:
        case ENOENT:
        case ENXIO:
            return translated("it isn’t connected any more.");
        default:
            return std::generic_category().message(error) + ".";
    }
}

/// By bus position and name.
CaptureDeviceDescription describe(const V4l2Device& device) {
    return {.uniqueID = device.bus() + "/" + device.card(), .localizedName = device.card()};
}

/// All cameras, or those up to the wanted one. One device may hold several, and of the nodes of one
/// camera only the first is kept.
Search cameras(const std::shared_ptr<V4l2Calls>& calls,
               const std::optional<std::string>& wantedID = std::nullopt) {
    Search search;
    auto& found = search.found;
    for (const V4l2Calls::Node& node : calls->nodes()) {
        const auto device = V4l2Device::open(calls, node.path);
        if (!device) {
            if (device.error() != ENOTTY && device.error() != EACCES) search.isWhole = false;
            continue;
        }
        const CaptureDeviceDescription description = describe(**device);
        const bool isKnown =
            std::ranges::find(found, description, &Camera::description) != found.end();
        // No convertible mode, as with an infrared camera.
        if (isKnown || (*device)->modes().empty()) continue;
        found.push_back({description, node.path});
        if (description.uniqueID == wantedID) break;
    }
    return search;
}

/// Opens it at the node where it was seen last, else wherever it is now.
std::expected<std::unique_ptr<V4l2Device>, int> openNamed(const std::shared_ptr<V4l2Calls>& calls,
                                                          const std::string& id,
                                                          const std::string& lastNode) {
    if (!lastNode.empty()) {
        auto device = V4l2Device::open(calls, lastNode);
        if (device && describe(**device).uniqueID == id && !(*device)->modes().empty())
            return device;
    }
    const auto found = cameras(calls, id).found;
    if (found.empty() || found.back().description.uniqueID != id) return std::unexpected(ENODEV);
    return V4l2Device::open(calls, found.back().node);
}

/// The device and settings that a start asked for.
struct Request {
    std::string deviceID;
    std::string lastNode;
    std::optional<V4l2Mode> mode;
    std::optional<FrameDuration> duration;
};

}  // namespace

/// The part that runs on the capture queue, and the state shared with the owner's thread.
class V4l2CaptureSession::Stream : public std::enable_shared_from_this<Stream> {
  public:
    explicit Stream(std::shared_ptr<V4l2Calls> calls) : calls_(std::move(calls)) {}

    void connect(std::shared_ptr<WorkQueue> queue,
                 std::function<void(const SampleBuffer&)> onSample) EXCLUDES(mutex_) {
        const MutexLock lock(mutex_);
        queue_ = std::move(queue);
        onSample_ = std::move(onSample);
    }
    void set(std::optional<Request> request) EXCLUDES(mutex_) {
        const MutexLock lock(mutex_);
        request_ = std::move(request);
        mustReopen_ = true;
    }

    void start() EXCLUDES(mutex_) {
        std::uint64_t run = 0;
        {
            const MutexLock lock(mutex_);
            if (isRunning_ || !queue_) return;
            isRunning_ = true;
            mustReopen_ = true;
            run = ++run_;
        }
        reopenIfNeeded();
        continueRun(run);
    }
    void stop() EXCLUDES(mutex_) {
        setRunning(false);
        device_.reset();
    }
    [[nodiscard]] bool isRunning() const EXCLUDES(mutex_) {
        const MutexLock lock(mutex_);
        return isRunning_;
    }
    /// Ends the run from the owner's thread; the device closes with the last reference.
    void abandon() EXCLUDES(mutex_) { setRunning(false); }

  private:
    void setRunning(bool isRunning) EXCLUDES(mutex_) {
        const MutexLock lock(mutex_);
        isRunning_ = isRunning;
    }

    void continueRun(std::uint64_t run) EXCLUDES(mutex_) {
        const MutexLock lock(mutex_);
        if (!isRunning_ || run != run_) return;
        queue_->async([weak = weak_from_this(), run] {
            if (const auto stream = weak.lock()) stream->step(run);
        });
    }

    void step(std::uint64_t run) EXCLUDES(mutex_) {
        {
            const MutexLock lock(mutex_);
            if (!isRunning_ || run != run_) return;
        }
        reopenIfNeeded();
        if (device_) {
            std::shared_ptr<const PixelBuffer> picture;
            const auto read =
                device_->readNewest(waitMilliseconds, [&](std::span<const std::uint8_t> bytes) {
                    picture = converter_.convert(layout_, bytes);
                });
            if (!read) stop();
            if (picture) deliver({std::move(picture)});
        } else {
            (void)calls_->poll(-1, waitMilliseconds);
        }
        continueRun(run);
    }

    void reopenIfNeeded() EXCLUDES(mutex_) {
        std::optional<Request> request;
        {
            const MutexLock lock(mutex_);
            if (!std::exchange(mustReopen_, false)) return;
            request = request_;
        }
        device_.reset();
        if (!request) return;
        auto device = openNamed(calls_, request->deviceID, request->lastNode);
        auto layout = device ? (*device)->start(request->mode, request->duration)
                             : std::unexpected(device.error());
        if (layout) {
            device_ = *std::move(device);
            layout_ = *layout;
        } else if (layout.error() == EBUSY) {
            const MutexLock lock(mutex_);
            mustReopen_ = true;
        } else {
            setRunning(false);
        }
    }

    void deliver(const SampleBuffer& sample) EXCLUDES(mutex_) {
        std::function<void(const SampleBuffer&)> onSample;
        {
            const MutexLock lock(mutex_);
            onSample = onSample_;
        }
        if (onSample) onSample(sample);
    }

    const std::shared_ptr<V4l2Calls> calls_;

    // Capture queue only.
    std::unique_ptr<V4l2Device> device_;
    V4l2Layout layout_;
    V4l2Converter converter_;

    mutable Mutex mutex_;
    std::shared_ptr<WorkQueue> queue_ GUARDED_BY(mutex_);
    std::function<void(const SampleBuffer&)> onSample_ GUARDED_BY(mutex_);
    std::optional<Request> request_ GUARDED_BY(mutex_);
    bool mustReopen_ GUARDED_BY(mutex_) = false;
    bool isRunning_ GUARDED_BY(mutex_) = false;
    /// Number of the start, so that a step still pending ends with its own run.
    std::uint64_t run_ GUARDED_BY(mutex_) = 0;
};

/// A snapshot of the camera's modes.
class V4l2CaptureSession::Input final : public CaptureInput {
  public:
    Input(std::string id, std::string node, std::vector<V4l2Mode> modes,
          std::weak_ptr<Stream> stream)
        : request_{std::move(id), std::move(node), std::nullopt, std::nullopt},
          modes_(std::move(modes)),
          stream_(std::move(stream)) {}

    [[nodiscard]] std::string deviceID() const override { return request_.deviceID; }
    [[nodiscard]] std::vector<CaptureFormat> formats() const override {
        std::vector<CaptureFormat> formats;
        formats.reserve(modes_.size());
        for (const V4l2Mode& mode : modes_)
            formats.push_back(mode.format);
        return formats;
    }
    [[nodiscard]] bool lockForConfiguration() override { return true; }
    void setActiveFormat(std::size_t index) override {
        if (index >= modes_.size()) return;
        request_.mode = modes_[index];
        if (isAttached_) apply();
    }
    void setFrameDuration(FrameDuration duration) override {
        request_.duration = duration;
        if (isAttached_) apply();
    }
    void unlockForConfiguration() override {}

    void setAttached(bool isAttached) {
        isAttached_ = isAttached;
        apply();
    }

  private:
    void apply() {
        if (const auto stream = stream_.lock()) {
            stream->set(isAttached_ ? std::optional(request_) : std::nullopt);
        }
    }

    Request request_;
    const std::vector<V4l2Mode> modes_;
    const std::weak_ptr<Stream> stream_;
    bool isAttached_ = false;
};

V4l2CaptureSession::V4l2CaptureSession(std::shared_ptr<V4l2Calls> calls)
    : calls_(std::move(calls)), stream_(std::make_shared<Stream>(calls_)) {}

V4l2CaptureSession::~V4l2CaptureSession() {
    stream_->abandon();
}

CaptureAuthorization V4l2CaptureSession::authorization() const {
    const auto nodes = calls_->nodes();
    const bool isOpen =
        nodes.empty() || std::ranges::any_of(nodes, [&](const V4l2Calls::Node& node) {
            return calls_->mayOpen(node.path);
        });
    return isOpen ? CaptureAuthorization::authorized : CaptureAuthorization::denied;
}

void V4l2CaptureSession::requestAccess(std::function<void(bool)> reply) {
    reply(authorization() == CaptureAuthorization::authorized);
}

std::vector<CaptureDeviceDescription> V4l2CaptureSession::discover(
    std::span<const CaptureDeviceType> types) const {
    const bool isAsked = std::ranges::any_of(
        types, [](CaptureDeviceType type) { return type != CaptureDeviceType::continuityCamera; });
    if (!isAsked) return {};
    std::vector<CaptureDeviceDescription> result;
    for (Camera& camera : listed())
        result.push_back(std::move(camera.description));
    return result;
}

std::vector<Camera> V4l2CaptureSession::listed() const {
    auto nodes = calls_->nodes();
    if (!listing_ || listing_->nodes != nodes) {
        Search search = cameras(calls_);
        listing_.reset();
        if (!search.isWhole) return std::move(search.found);
        listing_ = Listing{.nodes = std::move(nodes), .cameras = std::move(search.found)};
    }
    return listing_->cameras;
}

std::optional<CaptureDeviceDescription> V4l2CaptureSession::device(
    const std::string& uniqueID) const {
    for (Camera& camera : listed()) {
        if (camera.description.uniqueID == uniqueID) return std::move(camera.description);
    }
    return std::nullopt;
}

std::optional<CaptureDeviceDescription> V4l2CaptureSession::defaultDevice(
    CaptureDeviceType /*type*/, CapturePosition /*position*/) const {
    return std::nullopt;
}

std::optional<CaptureDeviceDescription> V4l2CaptureSession::defaultDevice() const {
    auto all = listed();
    return all.empty() ? std::nullopt : std::optional(std::move(all.front().description));
}

void V4l2CaptureSession::addOutput(const CaptureOutputSettings& /*settings*/,
                                   std::shared_ptr<WorkQueue> queue,
                                   std::function<void(const SampleBuffer&)> onSample) {
    stream_->connect(std::move(queue), std::move(onSample));
}

std::expected<std::unique_ptr<CaptureInput>, std::string> V4l2CaptureSession::makeInput(
    const std::string& deviceID) {
    const auto known = listed();
    const auto camera = std::ranges::find(
        known, deviceID, [](const Camera& one) -> auto& { return one.description.uniqueID; });
    const std::string node = camera != known.end() ? camera->node : std::string();
    const auto device = openNamed(calls_, deviceID, node);
    if (!device) return std::unexpected(sentence(device.error()));
    if (const auto isFree = (*device)->checkFree(); !isFree) {
        return std::unexpected(sentence(isFree.error()));
    }
    return std::make_unique<Input>(deviceID, node, (*device)->modes(), stream_);
}

bool V4l2CaptureSession::addInput(CaptureInput& input) {
    auto* mine = dynamic_cast<Input*>(&input);
    if (input_ || !mine) return false;
    input_ = mine;
    mine->setAttached(true);
    return true;
}

void V4l2CaptureSession::removeInput(CaptureInput& input) {
    if (input_ != &input) return;
    std::exchange(input_, nullptr)->setAttached(false);
}

void V4l2CaptureSession::start() {
    stream_->start();
}

void V4l2CaptureSession::stop() {
    stream_->stop();
}

bool V4l2CaptureSession::isRunning() const {
    return stream_->isRunning();
}

}  // namespace marrowby
