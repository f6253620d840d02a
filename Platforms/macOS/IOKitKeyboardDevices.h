#pragma once

#include "Platforms/macOS/Rules/KeyboardDevices.h"

namespace marrowby {

/// Keyboards through the HID manager, on the main run loop in its common modes. What programs post
/// does not pass here. Without Input Monitoring the manager does not open. A keyboard that another
/// program has seized stays silent, the others do not. Secure input, as in a password field, may
/// hold everything back. Nothing here throws.
class IOKitKeyboardDevices final : public KeyboardDevices {
  public:
    [[nodiscard]] bool hasListenAccess() const override;
    /// The system asks once per build of an application; after that it only lists it.
    void requestListenAccess() override;
    [[nodiscard]] std::unique_ptr<Listening> open(
        Match match, std::function<void(const InputValue&)> onValue) override;
};

}  // namespace marrowby
