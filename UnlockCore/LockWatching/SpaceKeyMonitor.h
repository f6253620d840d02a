#pragma once

#include "UnlockCore/LockWatching/OwnKeystrokes.h"
#include "UnlockCore/LockWatching/SpaceKeyListening.h"
#include "UnlockCore/Platform/KeyboardDevices.h"

#include <functional>
#include <memory>

namespace marrowby {

/// Reports presses of the Space key on any keyboard, but not those of this process's own typing,
/// while it is started. Main thread. The devices and the keystrokes outlive it.
class SpaceKeyMonitor final : public SpaceKeyListening {
  public:
    SpaceKeyMonitor(KeyboardDevices& devices, const OwnKeystrokes& own)
        : devices_(devices), own_(own) {}

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
    const OwnKeystrokes& own_;
    std::unique_ptr<KeyboardDevices::Listening> listening_;
};

}  // namespace marrowby
