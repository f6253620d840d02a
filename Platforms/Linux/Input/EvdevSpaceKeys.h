#pragma once

#include "Platforms/Linux/Input/EvdevDevices.h"
#include "UnlockCore/Platform/SpaceKeys.h"

#include <filesystem>
#include <functional>
#include <memory>

namespace marrowby {

/// The Space keys of the keyboards that the user may read, also of those plugged in later, without
/// key repeats; keyboards made by programs are synthetic. On the thread of Qt's event loop.
class EvdevSpaceKeys final : public SpaceKeys {
  public:
    explicit EvdevSpaceKeys(std::filesystem::path folder,
                            EvdevDevices::Describe describe = EvdevDevices::describe);

    /// Whether there is a keyboard that can be read.
    [[nodiscard]] bool hasListenAccess() const override;
    [[nodiscard]] std::unique_ptr<Listening> listen(std::function<void(Press)> onPress) override;

  private:
    class Readers;

    const EvdevDevices::Describe describe_;
    /// Kept open, for access is asked for often; never read.
    mutable EvdevDevices devices_;
};

}  // namespace marrowby
