#pragma once

#include "Platforms/Linux/EvdevDevices.h"
#include "UnlockCore/Platform/KeyboardDevices.h"

#include <filesystem>
#include <memory>

namespace marrowby {

/// The keyboards that the user may read, also those plugged in later. Reports the Space key only,
/// without key repeats; keyboards made by programs are synthetic. On the thread of Qt's event loop.
class EvdevKeyboardDevices final : public KeyboardDevices {
  public:
    explicit EvdevKeyboardDevices(std::filesystem::path folder,
                                  EvdevDevices::Describe describe = EvdevDevices::describe);

    /// Whether there is a keyboard that can be read.
    [[nodiscard]] bool hasListenAccess() const override;
    /// Only keyboards, usage page 1 usage 6, can be opened.
    [[nodiscard]] std::unique_ptr<Listening> open(
        Match match, std::function<void(const InputValue&)> onValue) override;

  private:
    class SpaceKeys;

    const EvdevDevices::Describe describe_;
    /// Kept open, for access is asked for often; never read.
    mutable EvdevDevices devices_;
};

}  // namespace marrowby
