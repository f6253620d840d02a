// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Platforms/macOS/Rules/KeyboardDevices.h"

namespace marrowby {

/// Keyboards through the HID manager, on the main run loop in common modes. Posted events do not
/// appear here. Opening needs Input Monitoring. A keyboard seized by another program stays silent.
/// Secure input, as in a password field, may suppress everything. Nothing throws.
class IOKitKeyboardDevices final : public KeyboardDevices {
  public:
    [[nodiscard]] bool hasListenAccess() const override;
    /// The system prompts once per build of an application; later calls only list it.
    void requestListenAccess() override;
    [[nodiscard]] std::unique_ptr<Listening> open(
        Match match, std::function<void(const InputValue&)> onValue) override;
};

}  // namespace marrowby
