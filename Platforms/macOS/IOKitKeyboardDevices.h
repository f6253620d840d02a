#pragma once

#include "UnlockCore/Platform/KeyboardDevices.h"

namespace marrowby {

/// Keyboards through the HID manager, on the main run loop in its common modes. What programs post
/// does not pass here. Without Input Monitoring the manager does not open, and the system may offer
/// its settings to the user.
class IOKitKeyboardDevices final : public KeyboardDevices {
  public:
    [[nodiscard]] bool hasListenAccess() const override;
    [[nodiscard]] std::unique_ptr<Listening> open(
        Match match, std::function<void(const InputValue&)> onValue) override;
};

}  // namespace marrowby
