// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Engine/ScanConfiguration.h"
#include "UnlockCore/Engine/ScanInsight.h"
#include "UnlockCore/Engine/ScanObservation.h"

#include <cstdint>
#include <functional>
#include <string>

namespace marrowby {

/// Identifies one scan; its frames carry it.
enum class ScanID : std::int64_t {};

/// Runs one scan at a time. Main thread, callbacks too; they may come within start(). None comes
/// for a scan after stop() or the next start().
class FaceScanning {
  public:
    struct Callbacks {
        std::function<void(ScanID, ScanObservation)> onFrame;
        /// The scan is over; the message is for the user.
        std::function<void(std::string message)> onCameraFailed;
        /// The configured camera can't be had: the one of this name looks instead. May be empty.
        std::function<void(const std::string& camera)> onOtherCamera{};
        /// After every frame. Empty: nothing is made for it.
        std::function<void(ScanInsight)> onInsight{};
    };

    virtual ~FaceScanning() = default;
    virtual void start(ScanID scan, const ScanConfiguration& configuration,
                       Callbacks callbacks) = 0;
    virtual void stop() = 0;
};

}  // namespace marrowby
