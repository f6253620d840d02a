// SPDX-License-Identifier: Apache-2.0
#include "UnlockCore/Recognition/CameraManager.h"

#include "UnlockCore/Foundation/Fatal.h"
#include "UnlockCore/Foundation/Mutex.h"
#include "UnlockCore/Foundation/Phrase.h"
#include "UnlockCore/Recognition/CameraFormatPicker.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <utility>

namespace marrowby {

namespace {

struct Describe {
    const PlatformWords& words;

    std::string operator()(const CameraError::CannotOpen& error) const {
        return translated("The camera couldn’t be opened: {reason}", {{"reason", error.reason}});
    }
    std::string operator()(const CameraError::NotAllowed& /*error*/) const {
        return translated("Marrowby Unlock isn’t allowed to use the camera. {advice}",
                          {{"advice", words.camera.advice(Phrase("Turn it on in {place}."))}});
    }
    std::string operator()(const CameraError::NoCamera& /*error*/) const {
        return translated("No camera found.");
    }
};

}  // namespace

std::string description(const CameraError& error, const PlatformWords& words) {
    return std::visit(Describe{.words = words}, error);
}

namespace {

constexpr const char* claimName = "unlock";
constexpr const char* queueLabel = "app.quenby.unlock.camera";
constexpr std::int64_t maximumHeight = 720;
constexpr double frameRate = 30;
constexpr FrameDuration frameDuration{1, 30};

}  // namespace

/// The queue's half: turns sample buffers into frames and remembers the newest.
class CameraManager::Delivery {
  public:
    Delivery(const Services& services, double workingLongEdge)
        : imaging_(services.imaging), clock_(services.clock), workingLongEdge_(workingLongEdge) {}

    void deliver(const SampleBuffer& sample) {
        if (!sample.image) return;
        const Size size = sample.image->extent();
        const double longEdge = std::max(size.width, size.height);
        const double scale = workingLongEdge_ < longEdge ? workingLongEdge_ / longEdge : 1;
        std::optional<Bitmap> image =
            imaging_.render(*sample.image, {0, 0, size.width, size.height}, scale);
        if (!image) return;

        std::optional<CameraFrame> frame;
        std::function<void(const CameraFrame&)> onFrame;
        {
            const MutexLock lock(mutex_);
            if (!accepting_) return;
            nextID_ = incremented(nextID_);
            frame = CameraFrame{.id = nextID_,
                                .image = *std::move(image),
                                .source = sample.image,
                                .sourceSize = size,
                                .timestamp = clock_.now()};
            latest_ = frame;
            onFrame = onFrame_;
        }
        if (onFrame) onFrame(*frame);
    }

    void accept(bool accepting) {
        const MutexLock lock(mutex_);
        latest_.reset();
        accepting_ = accepting;
    }

    void setOnFrame(std::function<void(const CameraFrame&)> onFrame) {
        const MutexLock lock(mutex_);
        std::swap(onFrame_, onFrame);
    }

    [[nodiscard]] std::optional<CameraFrame> latest() const {
        const MutexLock lock(mutex_);
        return latest_;
    }

  private:
    const Imaging& imaging_;
    const SystemClock& clock_;
    const double workingLongEdge_;

    mutable Mutex mutex_;
    std::function<void(const CameraFrame&)> onFrame_ GUARDED_BY(mutex_);
    std::optional<CameraFrame> latest_ GUARDED_BY(mutex_);
    bool accepting_ GUARDED_BY(mutex_) = false;
    std::int64_t nextID_ GUARDED_BY(mutex_) = 0;
};

/// Holds the device's configuration, where the system allows it, so that a session that starts or
/// stops meanwhile keeps the format.
class CameraManager::DeviceLock {
  public:
    explicit DeviceLock(std::shared_ptr<CaptureInput> input)
        : input_(std::move(input)), isHeld_(input_ && input_->lockForConfiguration()) {}
    DeviceLock(const DeviceLock&) = delete;
    DeviceLock& operator=(const DeviceLock&) = delete;
    ~DeviceLock() {
        if (isHeld_) input_->unlockForConfiguration();
    }

    [[nodiscard]] bool isHeld() const { return isHeld_; }

  private:
    const std::shared_ptr<CaptureInput> input_;
    const bool isHeld_;
};

/// The camera-use claim. Main thread.
struct CameraManager::Claim {
    CameraUseRegistry& registry;
    bool announced = false;
    /// Counts the successful starts.
    std::int64_t generation = 0;

    void announce() {
        if (announced) return;
        announced = true;
        registry.claim(claimName);
    }
    void withdraw() {
        if (!announced) return;
        announced = false;
        registry.withdraw(claimName);
    }
};

CameraManager::CameraManager(std::shared_ptr<CaptureSession> session, const Services& services,
                             double workingLongEdge)
    : session_(std::move(session)),
      services_(services),
      queue_(services.queues.serial(queueLabel)),
      delivery_(std::make_shared<Delivery>(services, workingLongEdge)),
      claim_(std::make_shared<Claim>(services.registry)) {}

CameraManager::~CameraManager() {
    delivery_->accept(false);
    delivery_->setOnFrame({});
    if (input_) {
        session_->beginConfiguration();
        detach();
        session_->commitConfiguration();
    }
    queue_->async([session = session_] {
        if (session->isRunning()) session->stop();
    });
    claim_->withdraw();
}

CameraManager::Permission CameraManager::permission(const CaptureSession& session) {
    switch (session.authorization()) {
        case CaptureAuthorization::notDetermined:
            return Permission::notDetermined;
        case CaptureAuthorization::restricted:
            return Permission::restricted;
        case CaptureAuthorization::authorized:
            return Permission::granted;
        case CaptureAuthorization::denied:
        case CaptureAuthorization::unknown:
            return Permission::denied;
    }
    return Permission::denied;
}

CameraManager::Permission CameraManager::permission() const {
    return permission(*session_);
}

void CameraManager::requestAccess(std::function<void(bool)> reply) {
    session_->requestAccess(
        [&mainThread = services_.mainThread, reply = std::move(reply)](bool granted) {
            mainThread.post([reply, granted] { reply(granted); });
        });
}

std::vector<CameraDevice> CameraManager::availableCameras(const CaptureSession& session) {
    constexpr std::array types{CaptureDeviceType::builtInWideAngleCamera,
                               CaptureDeviceType::externalCamera,
                               CaptureDeviceType::continuityCamera};
    std::vector<CameraDevice> cameras;
    for (const CaptureDeviceDescription& device : session.discover(types)) {
        cameras.push_back({device.uniqueID, device.localizedName});
    }
    return cameras;
}

std::expected<void, CameraError> CameraManager::start(const std::optional<std::string>& cameraID) {
    if (session_->authorization() != CaptureAuthorization::authorized) {
        return std::unexpected(CameraError::NotAllowed{});
    }
    const auto device = chooseDevice(cameraID);
    if (!device) return std::unexpected(CameraError::NoCamera{});

    session_->beginConfiguration();
    if (!configured_) {
        session_->setPreset(CapturePreset::high);
        // Weak: the session may outlive this manager.
        session_->addOutput({.pixelFormat = CapturePixelFormat::bgra32, .discardsLateFrames = true},
                            queue_, [weak = std::weak_ptr(delivery_)](const SampleBuffer& sample) {
                                if (const auto delivery = weak.lock()) delivery->deliver(sample);
                            });
        configured_ = true;
    }
    std::expected<std::shared_ptr<DeviceLock>, CameraError> attached;
    if (!input_ || input_->deviceID() != device->uniqueID) attached = attach(*device);
    session_->commitConfiguration();
    if (!attached) return std::unexpected(attached.error());

    claim_->generation = incremented(claim_->generation);
    delivery_->accept(true);
    claim_->announce();
    queue_->async([session = session_, input = input_, lock = *std::move(attached)]() mutable {
        if (!session->isRunning()) {
            if (!lock) lock = std::make_shared<DeviceLock>(std::move(input));
            session->start();
        }
        lock.reset();
    });
    return {};
}

void CameraManager::stop() {
    delivery_->accept(false);
    queue_->async([session = session_, input = input_, weak = std::weak_ptr(claim_),
                   generation = claim_->generation, &mainThread = services_.mainThread] {
        if (session->isRunning()) {
            const DeviceLock lock(input);
            session->stop();
        }
        mainThread.post([weak, generation] {
            const auto claim = weak.lock();
            if (claim && claim->generation == generation) claim->withdraw();
        });
    });
}

void CameraManager::setOnFrame(std::function<void(const CameraFrame&)> onFrame) {
    delivery_->setOnFrame(std::move(onFrame));
}

std::optional<CameraFrame> CameraManager::latestFrame() const {
    return delivery_->latest();
}

bool CameraManager::isRunning() const {
    return session_->isRunning();
}

std::optional<CaptureDeviceDescription> CameraManager::chooseDevice(
    const std::optional<std::string>& cameraID) const {
    const auto isUsable = [](const std::optional<CaptureDeviceDescription>& device) {
        return device && !device->isSuspended;
    };
    if (cameraID) {
        if (auto device = session_->device(*cameraID); isUsable(device)) return device;
    }
    // Last: the default of any kind may be a phone.
    for (const CapturePosition position : {CapturePosition::front, CapturePosition::unspecified}) {
        auto device = session_->defaultDevice(CaptureDeviceType::builtInWideAngleCamera, position);
        if (isUsable(device)) return device;
    }
    if (auto device = session_->defaultDevice(); isUsable(device)) return device;
    constexpr std::array attachedTypes{CaptureDeviceType::builtInWideAngleCamera,
                                       CaptureDeviceType::externalCamera};
    for (auto& device : session_->discover(attachedTypes)) {
        if (!device.isSuspended) return std::move(device);
    }
    return std::nullopt;
}

std::expected<std::shared_ptr<CameraManager::DeviceLock>, CameraError> CameraManager::attach(
    const CaptureDeviceDescription& device) {
    detach();
    auto input = session_->makeInput(device.uniqueID);
    if (!input) return std::unexpected(CameraError::CannotOpen{input.error()});
    if (!session_->addInput(**input)) {
        return std::unexpected(CameraError::CannotOpen{translated("the session won’t take it")});
    }
    input_ = *std::move(input);
    auto [lock, format] = applyFormat(input_);
    opened_ = {.device = {device.uniqueID, device.localizedName}, .format = format};
    return std::move(lock);
}

void CameraManager::detach() {
    if (!input_) return;
    session_->removeInput(*input_);
    input_.reset();
}

std::pair<std::shared_ptr<CameraManager::DeviceLock>, std::optional<CameraManager::Format>>
CameraManager::applyFormat(const std::shared_ptr<CaptureInput>& input) {
    const std::vector<CaptureFormat> formats = input->formats();
    std::vector<cameraformatpicker::Candidate> candidates;
    for (const CaptureFormat& format : formats) {
        double fastest = 0;
        for (const FrameRateRange& range : format.frameRates) {
            fastest = std::max(fastest, range.maximum);
        }
        candidates.push_back({format.width, format.height, fastest});
    }
    const auto picked = cameraformatpicker::pick(candidates, maximumHeight, frameRate);
    if (!picked) return {};
    auto lock = std::make_shared<DeviceLock>(input);
    if (!lock->isHeld()) return {};
    const CaptureFormat& wanted = formats[*picked];
    Format format{.width = wanted.width, .height = wanted.height, .frameRate = {}};
    input->setActiveFormat(*picked);
    if (std::ranges::any_of(wanted.frameRates, [](const FrameRateRange& range) {
            return range.minimum <= frameRate && range.maximum >= frameRate;
        })) {
        input->setFrameDuration(frameDuration);
        format.frameRate = frameRate;
    }
    return {std::move(lock), format};
}

}  // namespace marrowby
