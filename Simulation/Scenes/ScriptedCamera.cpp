// SPDX-License-Identifier: Apache-2.0
#include "Simulation/Scenes/ScriptedCamera.h"

#include <algorithm>
#include <atomic>
#include <utility>

namespace marrowby {

namespace {

constexpr const char* goneSentence = "The camera isn’t connected any more.";

TimeInterval fastest(const CaptureFormat& format) {
    double rate = 1;
    for (const FrameRateRange& range : format.frameRates)
        rate = std::max(rate, range.maximum);
    return TimeInterval(1 / rate);
}

std::shared_ptr<const PixelBuffer> plainGray(int width, int height) {
    constexpr std::uint8_t gray = 128;
    const std::size_t row = static_cast<std::size_t>(width) * 4;
    return PixelBuffer::create(
        width, height, row,
        std::vector<std::uint8_t>(row * static_cast<std::size_t>(height), gray));
}

}  // namespace

/// Delivers pictures to the capture queue. Shared by deliveries, which may outlive the camera.
class ScriptedCamera::Outlet : public std::enable_shared_from_this<Outlet> {
  public:
    void connect(std::function<void(const SampleBuffer&)> onSample) {
        const MutexLock lock(calling_);
        onSample_ = std::move(onSample);
    }
    /// Waits for a delivery in progress.
    void disconnect() {
        close();
        connect({});
    }

    void open() { run_ = ++lastRun_; }
    void close() { run_ = closed; }
    /// Whether the queue has not yet finished with a picture.
    [[nodiscard]] bool isBusy() const { return inFlight_ > 0; }

    void send(WorkQueue& queue, std::shared_ptr<const PixelBuffer> picture) {
        ++inFlight_;
        queue.async([self = shared_from_this(), run = run_.load(),
                     sample = SampleBuffer{std::move(picture)}] { self->deliver(sample, run); });
    }

  private:
    void deliver(const SampleBuffer& sample, std::uint64_t run) {
        {
            const MutexLock lock(calling_);
            if (run != closed && run == run_ && onSample_) onSample_(sample);
        }
        --inFlight_;
    }

    static constexpr std::uint64_t closed = 0;

    std::atomic<std::uint64_t> run_ = closed;
    std::uint64_t lastRun_ = closed;
    std::atomic<int> inFlight_ = 0;
    // Held during the call.
    Mutex calling_;
    std::function<void(const SampleBuffer&)> onSample_ GUARDED_BY(calling_);
};

class ScriptedCamera::Input final : public CaptureInput {
  public:
    Input(ScriptedCamera& camera, std::string deviceID)
        : camera_(camera), deviceID_(std::move(deviceID)) {}

    [[nodiscard]] std::string deviceID() const override { return deviceID_; }
    [[nodiscard]] std::vector<CaptureFormat> formats() const override {
        const MutexLock lock(camera_.mutex_);
        const Slot* slot = camera_.slot(deviceID_);
        return slot != nullptr ? slot->device.formats : std::vector<CaptureFormat>();
    }
    [[nodiscard]] bool lockForConfiguration() override {
        const MutexLock lock(camera_.mutex_);
        const Slot* slot = camera_.slot(deviceID_);
        return slot != nullptr;
    }
    void setActiveFormat(std::size_t index) override {
        const MutexLock lock(camera_.mutex_);
        Slot* slot = camera_.slot(deviceID_);
        if (slot == nullptr || index >= slot->device.formats.size()) return;
        slot->format = index;
        slot->frameTime = fastest(slot->device.formats[index]);
        ++camera_.change_;
    }
    void setFrameDuration(FrameDuration duration) override {
        const MutexLock lock(camera_.mutex_);
        Slot* slot = camera_.slot(deviceID_);
        if (slot == nullptr || duration.value <= 0 || duration.timescale <= 0) return;
        slot->frameTime = TimeInterval(static_cast<double>(duration.value) / duration.timescale);
    }
    void unlockForConfiguration() override {}

  private:
    ScriptedCamera& camera_;
    const std::string deviceID_;
};

ScriptedCamera::Device ScriptedCamera::builtInCamera(double picturesPerSecond) {
    return {.description = {.uniqueID = "rehearsal-camera", .localizedName = "Rehearsal camera"},
            .formats = {
                {.width = 640,
                 .height = 480,
                 .frameRates = {{.minimum = picturesPerSecond, .maximum = picturesPerSecond}}}}};
}

ScriptedCamera::ScriptedCamera(std::vector<Device> devices, const SystemClock& clock,
                               StartPacing startPacing)
    : clock_(clock), startPacing_(std::move(startPacing)), outlet_(std::make_shared<Outlet>()) {
    for (Device& device : devices) {
        const TimeInterval frameTime = fastest(device.formats.front());
        slots_.push_back({.device = std::move(device), .frameTime = frameTime});
    }
}

ScriptedCamera::~ScriptedCamera() {
    takePacing().reset();
    outlet_->disconnect();
}

const ScriptedCamera::Slot* ScriptedCamera::slot(std::string_view uniqueID) const {
    const auto found = std::ranges::find_if(slots_, [uniqueID](const Slot& each) {
        return each.device.description.uniqueID == uniqueID;
    });
    return found == slots_.end() ? nullptr : &*found;
}

ScriptedCamera::Slot* ScriptedCamera::slot(std::string_view uniqueID) {
    const auto found = std::ranges::find_if(slots_, [uniqueID](const Slot& each) {
        return each.device.description.uniqueID == uniqueID;
    });
    return found == slots_.end() ? nullptr : &*found;
}

void ScriptedCamera::setView(View view) {
    const MutexLock lock(mutex_);
    std::swap(view_, view);
    ++change_;
}

ScriptedCamera::Counts ScriptedCamera::counts() const {
    const MutexLock lock(mutex_);
    return counts_;
}

template <typename Fits>
std::optional<CaptureDeviceDescription> ScriptedCamera::firstDevice(Fits&& fits) const {
    const MutexLock lock(mutex_);
    for (const Slot& each : slots_) {
        if (fits(each.device)) return each.device.description;
    }
    return std::nullopt;
}

std::vector<CaptureDeviceDescription> ScriptedCamera::discover(
    std::span<const CaptureDeviceType> types) const {
    const MutexLock lock(mutex_);
    std::vector<CaptureDeviceDescription> found;
    for (const Slot& each : slots_) {
        if (std::ranges::find(types, each.device.type) != types.end())
            found.push_back(each.device.description);
    }
    return found;
}

std::optional<CaptureDeviceDescription> ScriptedCamera::device(const std::string& uniqueID) const {
    return firstDevice(
        [&uniqueID](const Device& each) { return each.description.uniqueID == uniqueID; });
}

std::optional<CaptureDeviceDescription> ScriptedCamera::defaultDevice(
    CaptureDeviceType type, CapturePosition position) const {
    return firstDevice([type, position](const Device& each) {
        return each.type == type &&
               (position == CapturePosition::unspecified || each.position == position);
    });
}

std::optional<CaptureDeviceDescription> ScriptedCamera::defaultDevice() const {
    return firstDevice([](const Device&) { return true; });
}

void ScriptedCamera::addOutput(const CaptureOutputSettings& settings,
                               std::shared_ptr<WorkQueue> queue,
                               std::function<void(const SampleBuffer&)> onSample) {
    outlet_->connect(std::move(onSample));
    const MutexLock lock(mutex_);
    queue_ = std::move(queue);
    discardsLateFrames_ = settings.discardsLateFrames;
}

std::expected<std::unique_ptr<CaptureInput>, std::string> ScriptedCamera::makeInput(
    const std::string& deviceID) {
    const MutexLock lock(mutex_);
    const Slot* found = slot(deviceID);
    if (found == nullptr) return std::unexpected(goneSentence);
    return std::make_unique<Input>(*this, deviceID);
}

bool ScriptedCamera::addInput(CaptureInput& input) {
    const std::string deviceID = input.deviceID();
    const MutexLock lock(mutex_);
    if (input_ != nullptr) return false;
    input_ = &input;
    inputID_ = deviceID;
    ++change_;
    return true;
}

void ScriptedCamera::removeInput(CaptureInput& input) {
    const MutexLock lock(mutex_);
    if (input_ == &input) input_ = nullptr;
}

void ScriptedCamera::start() {
    const MutexLock lock(mutex_);
    if (pacing_) return;
    isNewRun_ = true;
    outlet_->open();
    pacing_ = startPacing_([this] { return step(); });
}

void ScriptedCamera::stop() {
    outlet_->close();
    takePacing().reset();
}

bool ScriptedCamera::isRunning() const {
    const MutexLock lock(mutex_);
    return pacing_ != nullptr;
}

// The pacing ends outside the lock, which its step takes.
std::unique_ptr<Pacing> ScriptedCamera::takePacing() {
    const MutexLock lock(mutex_);
    return std::move(pacing_);
}

TimeInterval ScriptedCamera::step() {
    constexpr TimeInterval lookAgain{0.05};
    const Date now = clock_.now();
    View view;
    std::shared_ptr<WorkQueue> queue;
    bool discardsLateFrames = true;
    std::uint64_t change = 0;
    Shot shot;
    {
        const MutexLock lock(mutex_);
        const Slot* active = input_ != nullptr ? slot(inputID_) : nullptr;
        if (active == nullptr || !queue_) return lookAgain;
        if (std::exchange(isNewRun_, false)) {
            ahead_.reset();
            firstPictureAt_.reset();
        }
        const CaptureFormat& format = active->device.formats.at(active->format);
        shot.frameTime = active->frameTime;
        shot.width = static_cast<int>(format.width);
        shot.height = static_cast<int>(format.height);
        view = view_;
        queue = queue_;
        discardsLateFrames = discardsLateFrames_;
        change = change_;
    }
    if (!firstPictureAt_) firstPictureAt_ = now;
    const auto draw = [&](Date at) {
        shot.at = at;
        shot.running = at - *firstPictureAt_;
        return view ? view(shot) : plainGray(shot.width, shot.height);
    };
    if (discardsLateFrames && outlet_->isBusy()) {
        const MutexLock lock(mutex_);
        ++counts_.discarded;
        return shot.frameTime;
    }

    const bool isFresh =
        ahead_ && ahead_->change == change && now - ahead_->at < shot.frameTime * 1.5;
    const auto picture = isFresh ? std::move(ahead_->picture) : draw(now);
    ahead_.reset();
    if (picture) {
        {
            const MutexLock lock(mutex_);
            ++counts_.sent;
        }
        outlet_->send(*queue, picture);
    }
    ahead_ =
        Ahead{.picture = draw(now + shot.frameTime), .at = now + shot.frameTime, .change = change};
    return shot.frameTime;
}

}  // namespace marrowby
