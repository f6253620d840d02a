// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/LockWatching/OwnKeystrokes.h"
#include "UnlockCore/Platform/SpaceKeys.h"

#include <functional>
#include <memory>

namespace marrowby {

/// Listens for presses of the Space key. Main thread. start() and stop() are idempotent.
class SpaceKeyListening {
  public:
    virtual ~SpaceKeyListening() = default;
    virtual void start() = 0;
    virtual void stop() = 0;
};

/// Reports presses of the Space key on any keyboard, but not those of this process's own typing,
/// while it is started. Main thread. The keys and the keystrokes outlive it.
class SpaceKeyMonitor final : public SpaceKeyListening {
  public:
    SpaceKeyMonitor(SpaceKeys& keys, const OwnKeystrokes& own) : keys_(keys), own_(own) {}

    /// May stop or destroy the monitor.
    std::function<void()> onSpace;

    /// Whether the user lets this process watch keys.
    [[nodiscard]] bool hasAccess() const { return keys_.hasListenAccess(); }
    [[nodiscard]] bool isListening() const { return listening_ != nullptr; }
    /// Keyboards that cannot be opened leave it not listening; a later start tries again.
    void start() override;
    void stop() override { listening_.reset(); }

  private:
    void handle(SpaceKeys::Press press) const;

    SpaceKeys& keys_;
    const OwnKeystrokes& own_;
    std::unique_ptr<SpaceKeys::Listening> listening_;
};

}  // namespace marrowby
