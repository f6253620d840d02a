// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Platforms/macOS/Rules/KeyboardDevices.h"
#include "UnlockCore/Platform/SpaceKeys.h"

namespace marrowby {

/// The Space keys among the HID manager's input values. The devices outlive it.
class HidSpaceKeys final : public SpaceKeys {
  public:
    explicit HidSpaceKeys(KeyboardDevices& devices) : devices_(devices) {}

    [[nodiscard]] bool hasListenAccess() const override { return devices_.hasListenAccess(); }
    void requestListenAccess() override { devices_.requestListenAccess(); }
    [[nodiscard]] std::unique_ptr<Listening> listen(std::function<void(Press)> onPress) override;

  private:
    KeyboardDevices& devices_;
};

}  // namespace marrowby
