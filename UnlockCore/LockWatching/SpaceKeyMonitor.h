#pragma once

#include "UnlockCore/LockWatching/SpaceKeyListening.h"
#include "UnlockCore/Platform/KeyboardDevices.h"

#include <functional>
#include <memory>

namespace marrowby {

/// Reports presses of the Space key on any keyboard while it is started. Main thread. The devices
/// outlive it.
class SpaceKeyMonitor final : public SpaceKeyListening {
  public:
    explicit SpaceKeyMonitor(KeyboardDevices& devices) : devices_(devices) {}

    /// May stop or destroy the monitor.
    std::function<void()> onSpace;

    [[nodiscard]] bool hasAccess() const override { return devices_.hasListenAccess(); }
    [[nodiscard]] bool isListening() const { return listening_ != nullptr; }
    /// Keyboards that cannot be opened leave it not listening; a later start tries again.
    void start() override;
    void stop() override { listening_.reset(); }

  private:
    void handle(const KeyboardDevices::InputValue& value) const;

    KeyboardDevices& devices_;
    std::unique_ptr<KeyboardDevices::Listening> listening_;
};

}  // namespace marrowby
