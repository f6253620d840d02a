// SPDX-License-Identifier: Apache-2.0
#import "Platforms/macOS/AVFoundationCaptureSession.h"

#import "Platforms/macOS/DispatchWorkQueues.h"
#import "Platforms/macOS/FoundationError.h"
#import "Platforms/macOS/PixelBufferImage.h"
#include "UnlockCore/Foundation/Phrase.h"

#include <atomic>
#include <cstdint>
#include <utility>

#import <AVFoundation/AVFoundation.h>
#import <CoreMedia/CoreMedia.h>

/// The output's delegate: forwards every frame.
@interface MarrowbySampleReceiver : NSObject <AVCaptureVideoDataOutputSampleBufferDelegate>
- (instancetype)initWithReceiver:(std::function<void(const marrowby::SampleBuffer&)>)receiver;
@end

@implementation MarrowbySampleReceiver {
    std::function<void(const marrowby::SampleBuffer&)> _receiver;
}

- (instancetype)initWithReceiver:(std::function<void(const marrowby::SampleBuffer&)>)receiver {
    self = [super init];
    if (self) _receiver = std::move(receiver);
    return self;
}

- (void)captureOutput:(AVCaptureOutput*)__unused output
    didOutputSampleBuffer:(CMSampleBufferRef)buffer
           fromConnection:(AVCaptureConnection*)__unused connection {
    @autoreleasepool {
        marrowby::SampleBuffer sample;
        CVImageBufferRef image = CMSampleBufferGetImageBuffer(buffer);
        if (image && CFGetTypeID(image) == CVPixelBufferGetTypeID()) {
            sample.image = std::make_shared<const marrowby::PixelBufferImage>(image);
        }
        _receiver(sample);
    }
}

@end

namespace marrowby {

namespace {

static_assert(static_cast<OSType>(CapturePixelFormat::bgra32) == kCVPixelFormatType_32BGRA);

AVCaptureDeviceType deviceType(CaptureDeviceType type) {
    switch (type) {
        case CaptureDeviceType::builtInWideAngleCamera:
            return AVCaptureDeviceTypeBuiltInWideAngleCamera;
        case CaptureDeviceType::externalCamera:
            return AVCaptureDeviceTypeExternal;
        case CaptureDeviceType::continuityCamera:
            return AVCaptureDeviceTypeContinuityCamera;
    }
    return AVCaptureDeviceTypeBuiltInWideAngleCamera;
}

AVCaptureDevicePosition devicePosition(CapturePosition position) {
    switch (position) {
        case CapturePosition::unspecified:
            return AVCaptureDevicePositionUnspecified;
        case CapturePosition::front:
            return AVCaptureDevicePositionFront;
    }
    return AVCaptureDevicePositionUnspecified;
}

AVCaptureSessionPreset sessionPreset(CapturePreset preset) {
    switch (preset) {
        case CapturePreset::high:
            return AVCaptureSessionPresetHigh;
    }
    return AVCaptureSessionPresetHigh;
}

std::optional<CaptureDeviceDescription> description(AVCaptureDevice* device) {
    if (!device) return std::nullopt;
    return CaptureDeviceDescription{.uniqueID = plainText(device.uniqueID),
                                    .localizedName = plainText(device.localizedName),
                                    .isSuspended = device.suspended != NO};
}

CaptureFormat format(AVCaptureDeviceFormat* format) {
    const CMVideoDimensions size = CMVideoFormatDescriptionGetDimensions(format.formatDescription);
    CaptureFormat result{.width = size.width, .height = size.height, .frameRates = {}};
    for (AVFrameRateRange* range in format.videoSupportedFrameRateRanges)
        result.frameRates.push_back({.minimum = range.minFrameRate, .maximum = range.maxFrameRate});
    return result;
}

/// Calls what may throw an NSException.
template <typename Call>
void attempt(const Call& call) {
    (void)withoutExceptions(false, [&] {
        call();
        return true;
    });
}

AVCaptureDevice* camera(AVCaptureInput* input) {
    if (![input isKindOfClass:AVCaptureDeviceInput.class]) return nil;
    return static_cast<AVCaptureDeviceInput*>(input).device;
}

/// Stops a failed run with the camera's configuration locked, as in a regular stop.
void stopLocked(AVCaptureSession* session) {
    NSMutableArray<AVCaptureDevice*>* const locked = [NSMutableArray array];
    attempt([&] {
        for (AVCaptureInput* input in session.inputs) {
            AVCaptureDevice* const device = camera(input);
            if ([device lockForConfiguration:nullptr]) [locked addObject:device];
        }
    });
    attempt([&] { [session stopRunning]; });
    attempt([&] {
        for (AVCaptureDevice* device in locked)
            [device unlockForConfiguration];
    });
}

}  // namespace

class AVFoundationCaptureSession::Input final : public CaptureInput {
  public:
    Input(AVCaptureDevice* device, AVCaptureDeviceInput* input) : device_(device), input_(input) {}

    [[nodiscard]] AVCaptureDeviceInput* input() const { return input_; }

    [[nodiscard]] std::string deviceID() const override {
        return device_.connected ? plainText(device_.uniqueID) : "";
    }
    [[nodiscard]] std::vector<CaptureFormat> formats() const override {
        std::vector<CaptureFormat> result;
        for (AVCaptureDeviceFormat* each in formats_)
            result.push_back(format(each));
        return result;
    }
    [[nodiscard]] bool lockForConfiguration() override {
        return withoutExceptions(false,
                                 [&] { return bool{[device_ lockForConfiguration:nullptr]}; });
    }
    void setActiveFormat(std::size_t index) override {
        if (index >= formats_.count) return;
        attempt([&] { device_.activeFormat = formats_[index]; });
    }
    void setFrameDuration(FrameDuration duration) override {
        const CMTime time = CMTimeMake(duration.value, duration.timescale);
        attempt([&] {
            device_.activeVideoMinFrameDuration = time;
            device_.activeVideoMaxFrameDuration = time;
        });
    }
    void unlockForConfiguration() override {
        attempt([&] { [device_ unlockForConfiguration]; });
    }

  private:
    AVCaptureDevice* const device_;
    AVCaptureDeviceInput* const input_;
    /// A snapshot: the device may change its list at any time.
    NSArray<AVCaptureDeviceFormat*>* const formats_ = device_.formats;
};

struct AVFoundationCaptureSession::Session {
    AVCaptureSession* const session = [[AVCaptureSession alloc] init];
    AVCaptureVideoDataOutput* const output = [[AVCaptureVideoDataOutput alloc] init];
    /// The output does not retain it.
    MarrowbySampleReceiver* receiver = nil;
    NSMutableArray<id>* const observers = [NSMutableArray array];
    /// Number of the start, so that an error of one run does not end the next.
    const std::shared_ptr<std::atomic<std::uint64_t>> runs =
        std::make_shared<std::atomic<std::uint64_t>>();

    Session() = default;
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;
    ~Session() {
        for (id observer in observers)
            [NSNotificationCenter.defaultCenter removeObserver:observer];
        attempt([&] { [output setSampleBufferDelegate:nil queue:nullptr]; });
    }

    /// Ends the run on `queue` after an error. Notifications arrive on any thread.
    void watch(dispatch_queue_t queue) {
        __weak AVCaptureSession* weakSession = session;
        const auto counted = runs;
        observe(AVCaptureSessionRuntimeErrorNotification, session,
                ^(NSNotification* __unused note) {
                  const std::uint64_t run = *counted;
                  dispatch_async(queue, ^{
                    if (run == *counted) stopLocked(weakSession);
                  });
                });
        observe(AVCaptureDeviceWasDisconnectedNotification, nil, ^(NSNotification* __unused note) {
          dispatch_async(queue, ^{
            AVCaptureSession* running = weakSession;
            for (AVCaptureInput* input in running.inputs) {
                AVCaptureDevice* const device = camera(input);
                if (device && !device.connected) stopLocked(running);
            }
          });
        });
    }

    void observe(NSNotificationName name, id object, void (^block)(NSNotification*)) {
        [observers addObject:[NSNotificationCenter.defaultCenter addObserverForName:name
                                                                             object:object
                                                                              queue:nil
                                                                         usingBlock:block]];
    }
};

AVFoundationCaptureSession::AVFoundationCaptureSession() : session_(std::make_unique<Session>()) {}
AVFoundationCaptureSession::~AVFoundationCaptureSession() = default;

CaptureAuthorization AVFoundationCaptureSession::authorization() const {
    switch ([AVCaptureDevice authorizationStatusForMediaType:AVMediaTypeVideo]) {
        case AVAuthorizationStatusNotDetermined:
            return CaptureAuthorization::notDetermined;
        case AVAuthorizationStatusRestricted:
            return CaptureAuthorization::restricted;
        case AVAuthorizationStatusDenied:
            return CaptureAuthorization::denied;
        case AVAuthorizationStatusAuthorized:
            return CaptureAuthorization::authorized;
    }
    return CaptureAuthorization::unknown;
}

void AVFoundationCaptureSession::requestAccess(std::function<void(bool)> reply) {
    [AVCaptureDevice requestAccessForMediaType:AVMediaTypeVideo
                             completionHandler:^(BOOL granted) {
                               reply(granted);
                             }];
}

std::vector<CaptureDeviceDescription> AVFoundationCaptureSession::discover(
    std::span<const CaptureDeviceType> types) const {
    std::vector<CaptureDeviceDescription> result;
    @autoreleasepool {
        NSMutableArray<AVCaptureDeviceType>* wanted = [NSMutableArray array];
        for (const CaptureDeviceType type : types)
            [wanted addObject:deviceType(type)];
        AVCaptureDeviceDiscoverySession* discovery = [AVCaptureDeviceDiscoverySession
            discoverySessionWithDeviceTypes:wanted
                                  mediaType:AVMediaTypeVideo
                                   position:AVCaptureDevicePositionUnspecified];
        for (AVCaptureDevice* device in discovery.devices)
            result.push_back(*description(device));
    }
    return result;
}

std::optional<CaptureDeviceDescription> AVFoundationCaptureSession::device(
    const std::string& uniqueID) const {
    return description([AVCaptureDevice deviceWithUniqueID:foundationText(uniqueID)]);
}

std::optional<CaptureDeviceDescription> AVFoundationCaptureSession::defaultDevice(
    CaptureDeviceType type, CapturePosition position) const {
    return description([AVCaptureDevice defaultDeviceWithDeviceType:deviceType(type)
                                                          mediaType:AVMediaTypeVideo
                                                           position:devicePosition(position)]);
}

std::optional<CaptureDeviceDescription> AVFoundationCaptureSession::defaultDevice() const {
    return description([AVCaptureDevice defaultDeviceWithMediaType:AVMediaTypeVideo]);
}

void AVFoundationCaptureSession::beginConfiguration() {
    [session_->session beginConfiguration];
}

void AVFoundationCaptureSession::commitConfiguration() {
    attempt([&] { [session_->session commitConfiguration]; });
}

void AVFoundationCaptureSession::setPreset(CapturePreset preset) {
    attempt([&] { session_->session.sessionPreset = sessionPreset(preset); });
}

void AVFoundationCaptureSession::addOutput(const CaptureOutputSettings& settings,
                                           std::shared_ptr<WorkQueue> queue,
                                           std::function<void(const SampleBuffer&)> onSample) {
    const auto* dispatch = dynamic_cast<const DispatchWorkQueue*>(queue.get());
    if (!dispatch) return;
    session_->receiver = [[MarrowbySampleReceiver alloc] initWithReceiver:std::move(onSample)];
    attempt([&] {
        session_->output.videoSettings = @{
            (__bridge NSString*)
            kCVPixelBufferPixelFormatTypeKey : @(static_cast<OSType>(settings.pixelFormat))
        };
        session_->output.alwaysDiscardsLateVideoFrames = settings.discardsLateFrames;
        [session_->output setSampleBufferDelegate:session_->receiver queue:dispatch->queue()];
        if ([session_->session canAddOutput:session_->output]) {
            [session_->session addOutput:session_->output];
        }
    });
    session_->watch(dispatch->queue());
}

std::expected<std::unique_ptr<CaptureInput>, std::string> AVFoundationCaptureSession::makeInput(
    const std::string& deviceID) {
    @autoreleasepool {
        @try {
            AVCaptureDevice* device = [AVCaptureDevice deviceWithUniqueID:foundationText(deviceID)];
            if (!device) return std::unexpected(translated("it isn’t connected any more."));
            NSError* error = nil;
            AVCaptureDeviceInput* input = [AVCaptureDeviceInput deviceInputWithDevice:device
                                                                                error:&error];
            if (!input) return std::unexpected(sentence(error));
            return std::make_unique<Input>(device, input);
        } @catch (NSException* exception) {
            return std::unexpected(sentence(exception));
        }
    }
}

bool AVFoundationCaptureSession::addInput(CaptureInput& input) {
    auto* const mine = dynamic_cast<Input*>(&input);
    if (!mine) return false;
    return withoutExceptions(false, [&] {
        if (![session_->session canAddInput:mine->input()]) return false;
        [session_->session addInput:mine->input()];
        return true;
    });
}

void AVFoundationCaptureSession::removeInput(CaptureInput& input) {
    if (auto* const mine = dynamic_cast<Input*>(&input)) {
        attempt([&] { [session_->session removeInput:mine->input()]; });
    }
}

void AVFoundationCaptureSession::start() {
    ++*session_->runs;
    attempt([&] { [session_->session startRunning]; });
}

void AVFoundationCaptureSession::stop() {
    attempt([&] { [session_->session stopRunning]; });
}

bool AVFoundationCaptureSession::isRunning() const {
    return session_->session.running;
}

}  // namespace marrowby
