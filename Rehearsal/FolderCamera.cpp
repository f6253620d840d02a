#include "Rehearsal/FolderCamera.h"

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <utility>
#include <vector>

namespace marrowby {

namespace {

CaptureDeviceDescription theCamera() {
    return {.uniqueID = FolderCamera::uniqueID, .localizedName = "Rehearsal camera"};
}

std::shared_ptr<const PixelBuffer> emptyRoom(int width, int height) {
    constexpr std::uint8_t gray = 128;
    const std::size_t row = static_cast<std::size_t>(width) * 4;
    return PixelBuffer::create(
        width, height, row,
        std::vector<std::uint8_t>(row * static_cast<std::size_t>(height), gray));
}

}  // namespace

/// The way of a picture to the capture queue. Deliveries share it, as they may outlive the camera.
class FolderCamera::Outlet : public std::enable_shared_from_this<Outlet> {
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

/// Walks through a scene, one picture read ahead.
class FolderCamera::Player {
  public:
    void show(Scene scene, int width, int height) {
        scene_ = std::move(scene);
        room_ = scene_.sequence ? nullptr : emptyRoom(width, height);
        rewind();
    }
    void rewind() {
        index_ = 0;
        ahead_.reset();
        lastShown_.reset();
    }
    [[nodiscard]] bool continues() const { return scene_.continues; }

    /// The next picture; the error is the sentence about one that couldn't be read. Nothing where
    /// not one picture of the sequence could be.
    std::expected<std::shared_ptr<const PixelBuffer>, std::string> next() {
        if (room_) return room_;
        if (hasEnded()) return lastShown_;
        auto picture = ahead_ ? std::move(*ahead_) : scene_.sequence->picture(index_);
        ahead_.reset();
        ++index_;
        if (hasEnded() && scene_.atEnd == Scene::AtEnd::loop) index_ = 0;
        if (picture) lastShown_ = *picture;
        return picture;
    }

    void readAhead() {
        if (!room_ && !hasEnded() && !ahead_) ahead_ = scene_.sequence->picture(index_);
    }

  private:
    [[nodiscard]] bool hasEnded() const { return index_ >= scene_.sequence->frames().size(); }

    Scene scene_;
    std::shared_ptr<const PixelBuffer> room_;
    std::size_t index_ = 0;
    std::optional<std::expected<std::shared_ptr<const PixelBuffer>, std::string>> ahead_;
    std::shared_ptr<const PixelBuffer> lastShown_;
};

class FolderCamera::Input final : public CaptureInput {
  public:
    explicit Input(const FolderCamera& camera) : camera_(camera) {}

    [[nodiscard]] std::string deviceID() const override { return uniqueID; }
    [[nodiscard]] std::vector<CaptureFormat> formats() const override { return {camera_.format()}; }
    [[nodiscard]] bool lockForConfiguration() override { return true; }
    // There is one format, and the sequence has its own rate.
    void setActiveFormat(std::size_t /*index*/) override {}
    void setFrameDuration(FrameDuration /*duration*/) override {}
    void unlockForConfiguration() override {}

  private:
    const FolderCamera& camera_;
};

FolderCamera::FolderCamera(StartPacing startPacing,
                           std::function<void(const std::string&)> onUnreadable)
    : startPacing_(std::move(startPacing)),
      onUnreadable_(std::move(onUnreadable)),
      outlet_(std::make_shared<Outlet>()),
      player_(std::make_unique<Player>()) {}

FolderCamera::~FolderCamera() {
    takePacing().reset();
    outlet_->disconnect();
}

void FolderCamera::setScene(Scene scene) {
    const MutexLock lock(mutex_);
    if (scene.sequence) {
        width_ = scene.sequence->width();
        height_ = scene.sequence->height();
        framesPerSecond_ = scene.sequence->framesPerSecond();
    }
    scene_ = std::move(scene);
    isNewScene_ = true;
}

void FolderCamera::setAuthorization(CaptureAuthorization authorization) {
    const MutexLock lock(mutex_);
    authorization_ = authorization;
}

void FolderCamera::setPlugged(bool isPlugged) {
    const MutexLock lock(mutex_);
    isPlugged_ = isPlugged;
}

void FolderCamera::setBusy(std::optional<std::string> reason) {
    const MutexLock lock(mutex_);
    busyReason_ = std::move(reason);
}

FolderCamera::Counts FolderCamera::counts() const {
    const MutexLock lock(mutex_);
    return counts_;
}

CaptureAuthorization FolderCamera::authorization() const {
    const MutexLock lock(mutex_);
    return authorization_;
}

void FolderCamera::requestAccess(std::function<void(bool)> reply) {
    bool isGranted = false;
    {
        const MutexLock lock(mutex_);
        if (authorization_ == CaptureAuthorization::notDetermined) {
            authorization_ = CaptureAuthorization::authorized;
        }
        isGranted = authorization_ == CaptureAuthorization::authorized;
    }
    reply(isGranted);
}

std::vector<CaptureDeviceDescription> FolderCamera::discover(
    std::span<const CaptureDeviceType> types) const {
    const auto camera = defaultDevice();
    if (!camera ||
        std::ranges::find(types, CaptureDeviceType::builtInWideAngleCamera) == types.end()) {
        return {};
    }
    return {*camera};
}

std::optional<CaptureDeviceDescription> FolderCamera::device(const std::string& wantedID) const {
    return wantedID == uniqueID ? defaultDevice() : std::nullopt;
}

std::optional<CaptureDeviceDescription> FolderCamera::defaultDevice(
    CaptureDeviceType type, CapturePosition /*position*/) const {
    return type == CaptureDeviceType::builtInWideAngleCamera ? defaultDevice() : std::nullopt;
}

std::optional<CaptureDeviceDescription> FolderCamera::defaultDevice() const {
    const MutexLock lock(mutex_);
    return isPlugged_ ? std::optional(theCamera()) : std::nullopt;
}

void FolderCamera::addOutput(const CaptureOutputSettings& settings,
                             std::shared_ptr<WorkQueue> queue,
                             std::function<void(const SampleBuffer&)> onSample) {
    outlet_->connect(std::move(onSample));
    const MutexLock lock(mutex_);
    queue_ = std::move(queue);
    discardsLateFrames_ = settings.discardsLateFrames;
}

std::expected<std::unique_ptr<CaptureInput>, std::string> FolderCamera::makeInput(
    const std::string& deviceID) {
    const MutexLock lock(mutex_);
    if (busyReason_) return std::unexpected(*busyReason_);
    if (!isPlugged_ || deviceID != uniqueID) {
        return std::unexpected("The camera isn’t connected any more.");
    }
    return std::make_unique<Input>(*this);
}

bool FolderCamera::addInput(CaptureInput& input) {
    const MutexLock lock(mutex_);
    if (input_) return false;
    input_ = &input;
    return true;
}

void FolderCamera::removeInput(CaptureInput& input) {
    const MutexLock lock(mutex_);
    if (input_ == &input) input_ = nullptr;
}

void FolderCamera::start() {
    const MutexLock lock(mutex_);
    if (pacing_) return;
    isNewRun_ = true;
    outlet_->open();
    pacing_ = startPacing_([this] { return step(); });
}

void FolderCamera::stop() {
    outlet_->close();
    takePacing().reset();
}

bool FolderCamera::isRunning() const {
    const MutexLock lock(mutex_);
    return pacing_ != nullptr;
}

CaptureFormat FolderCamera::format() const {
    const MutexLock lock(mutex_);
    return {.width = width_,
            .height = height_,
            .frameRates = {{.minimum = framesPerSecond_, .maximum = framesPerSecond_}}};
}

// A step takes the lock, so the pacing must end outside of it.
std::unique_ptr<Pacing> FolderCamera::takePacing() {
    const MutexLock lock(mutex_);
    return std::move(pacing_);
}

TimeInterval FolderCamera::step() {
    std::shared_ptr<WorkQueue> queue;
    TimeInterval interval{};
    bool discardsLateFrames = true;
    {
        const MutexLock lock(mutex_);
        interval = TimeInterval(1 / framesPerSecond_);
        if (!isPlugged_ || !input_ || !queue_) return interval;
        if (isNewScene_) {
            player_->show(scene_, width_, height_);
        } else if (isNewRun_ && !player_->continues()) {
            player_->rewind();
        }
        isNewScene_ = false;
        isNewRun_ = false;
        queue = queue_;
        discardsLateFrames = discardsLateFrames_;
    }
    const auto picture = player_->next();
    const bool isLate = discardsLateFrames && outlet_->isBusy();
    {
        const MutexLock lock(mutex_);
        if (!picture) {
            ++counts_.unreadable;
        } else if (isLate) {
            ++counts_.late;
        } else if (*picture) {
            ++counts_.sent;
        }
    }
    if (!picture) {
        if (onUnreadable_) onUnreadable_(picture.error());
    } else if (!isLate && *picture) {
        outlet_->send(*queue, *picture);
    }
    player_->readAhead();
    return interval;
}

}  // namespace marrowby
