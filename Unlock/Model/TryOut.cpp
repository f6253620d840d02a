// SPDX-License-Identifier: Apache-2.0
#include "Unlock/Model/TryOut.h"

#include <utility>

namespace marrowby {

namespace {

constexpr TimeInterval resultTolerance{0.2};

}  // namespace

TryOut::TryOut(Services services, std::function<void(const View&)> onChange)
    : services_(std::move(services)), onChange_(std::move(onChange)) {}

TryOut::~TryOut() {
    look_.reset();
    services_.scanner.stop();
}

void TryOut::look() {
    view_.result.reset();
    look_ =
        std::make_unique<TrialLook>(TrialLook::Services{.scanner = *this,
                                                        .mainThread = services_.mainThread,
                                                        .clock = services_.clock,
                                                        .windowServer = services_.windowServer},
                                    services_.readiness(), weakSelf_.guarded(&TryOut::lookEnded));
    look_->start();
}

void TryOut::lookEnded(const TrialLook::Result& result) {
    view_.result = result;
    next_ =
        services_.mainThread.at(services_.clock.now() + pause, resultTolerance, [this] { look(); });
    tell();
}

void TryOut::tell() {
    // Copies: the call may destroy this.
    const auto onChange = onChange_;
    const View view = view_;
    onChange(view);
}

void TryOut::start(ScanID scan, const ScanConfiguration& configuration, Callbacks callbacks) {
    ofLook_ = std::move(callbacks);
    // Copies: the look may end within a call.
    services_.scanner.start(scan, configuration,
                            {.onFrame =
                                 [this](ScanID id, ScanObservation observation) {
                                     if (const auto look = ofLook_)
                                         look->onFrame(id, std::move(observation));
                                 },
                             .onCameraFailed =
                                 [this](std::string message) {
                                     view_.insight.reset();
                                     if (const auto look = ofLook_)
                                         look->onCameraFailed(std::move(message));
                                 },
                             .onOtherCamera =
                                 [this](const std::string& camera) {
                                     if (const auto look = ofLook_) look->onOtherCamera(camera);
                                 },
                             .onInsight =
                                 [this](ScanInsight insight) {
                                     view_.insight = std::move(insight);
                                     tell();
                                 }});
}

}  // namespace marrowby
