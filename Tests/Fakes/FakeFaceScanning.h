#pragma once

#include "UnlockCore/Engine/FaceScanning.h"

#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace marrowby {

/// A scanner whose frames the test sends.
class FakeFaceScanning final : public FaceScanning {
  public:
    /// Set: the camera fails with this message while start() runs.
    std::optional<std::string> failsAtOnceWith;
    /// Told of every call: "startCamera 3", "stopCamera".
    std::function<void(std::string)> onCall;

    std::optional<LookID> look;
    ScanConfiguration configuration;

    void start(LookID id, const ScanConfiguration& scan, Callbacks callbacks) override {
        if (onCall) onCall("startCamera " + std::to_string(static_cast<std::int64_t>(id)));
        look = id;
        configuration = scan;
        callbacks_ = std::move(callbacks);
        if (failsAtOnceWith) callbacks_.onCameraFailed(*failsAtOnceWith);
    }
    void stop() override {
        if (onCall) onCall("stopCamera");
        look.reset();
    }

    /// The callbacks of the last look; a scanner that keeps its promise calls none after stop().
    [[nodiscard]] const Callbacks& callbacks() const { return callbacks_; }

  private:
    Callbacks callbacks_;
};

}  // namespace marrowby
