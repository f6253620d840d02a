// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Platforms/Linux/Input/EvdevDevices.h"
#include "UnlockCore/Platform/SpaceKeys.h"

#include <filesystem>
#include <functional>
#include <memory>

namespace marrowby {

/// Space keys of the readable keyboards, hot-plugged ones included, without key repeats; uinput
/// keyboards count as synthetic. On the thread of Qt's event loop.
class EvdevSpaceKeys final : public SpaceKeys {
  public:
    explicit EvdevSpaceKeys(std::filesystem::path folder,
                            EvdevDevices::Describe describe = EvdevDevices::describe);

    /// Whether any keyboard is readable.
    [[nodiscard]] bool hasListenAccess() const override;
    [[nodiscard]] std::unique_ptr<Listening> listen(std::function<void(Press)> onPress) override;

  private:
    class Readers;

    const EvdevDevices::Describe describe_;
    /// Kept open because access is checked often; never read.
    mutable EvdevDevices devices_;
};

}  // namespace marrowby
