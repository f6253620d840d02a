// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Platform/SessionUnlocking.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace marrowby {

/// Whether a desktop that unlocks when logind asks it, GNOME's or KDE's, is on the session bus.
/// Main thread, under Qt's event loop.
class ShellWatcher {
  public:
    using Shell = SessionUnlockFacts::Shell;

    /// `user`: whose program counts as the user's own.
    ShellWatcher(std::string busAddress, std::uint32_t user);
    ~ShellWatcher();
    ShellWatcher(const ShellWatcher&) = delete;
    ShellWatcher& operator=(const ShellWatcher&) = delete;

    /// After each change of shell(); must not destroy the watcher.
    std::function<void()> onChange;

    /// Call once.
    void start();

    [[nodiscard]] Shell shell() const;
    /// Asks the bus anew. The callback comes once, later, and not where the bus has gone.
    void read(const std::function<void(Shell)>& onRead);

  private:
    class Names;

    const std::unique_ptr<Names> names_;
};

}  // namespace marrowby
