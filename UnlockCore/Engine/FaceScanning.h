#pragma once

#include "UnlockCore/Engine/ScanConfiguration.h"
#include "UnlockCore/Engine/ScanObservation.h"

#include <cstdint>
#include <functional>
#include <string>

namespace marrowby {

/// Names one look; frames carry it back.
enum class LookID : std::int64_t {};

/// Runs the camera for one look at a time. Main thread, callbacks too; they may come while start()
/// runs. None comes for a look after stop() or after the next start().
class FaceScanning {
  public:
    struct Callbacks {
        std::function<void(LookID, ScanObservation)> onFrame;
        /// The look cannot go on; the message is for the user.
        std::function<void(std::string message)> onCameraFailed;
    };

    virtual ~FaceScanning() = default;
    virtual void start(LookID look, const ScanConfiguration& configuration,
                       Callbacks callbacks) = 0;
    virtual void stop() = 0;
};

}  // namespace marrowby
