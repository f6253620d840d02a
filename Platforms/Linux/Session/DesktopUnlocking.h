// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Platforms/Linux/Session/LogindWatcher.h"
#include "Platforms/Linux/Session/ShellWatcher.h"
#include "UnlockCore/Platform/SessionUnlocking.h"

#include <filesystem>
#include <functional>
#include <optional>
#include <string>

namespace marrowby {

/// Unlocks a Wayland session through logind, which tells the desktop. The watcher outlives it. Main
/// thread, under Qt's event loop.
class DesktopUnlocking final : public SessionUnlocking {
  public:
    /// The policy is read anew before every request; one that cannot be read forbids.
    DesktopUnlocking(LogindWatcher& logind, const std::string& sessionBus,
                     std::filesystem::path policy);

    /// Whether this process may type through the kernel; may be empty.
    std::function<bool()> canTypeThroughKernel;

    /// Call once.
    void start();
    /// Call after a change of the watcher.
    void update();

    [[nodiscard]] LockOpening opening() const override;
    [[nodiscard]] bool isSessionKnown() const override { return logind_.hasSession(); }
    void read(std::function<void(const SessionUnlockFacts&)> onRead) override;
    void ask(std::function<void(const std::expected<void, std::string>&)> onAnswer) override;
    void lockAgain() override { logind_.lock(); }

  private:
    [[nodiscard]] bool isForbidden() const;

    LogindWatcher& logind_;
    ShellWatcher shell_;
    const std::filesystem::path policy_;
    /// As read last.
    bool isForbidden_ = false;
    /// It may crash and come back: the session stays what it is.
    bool hasSeenShell_ = false;
    bool wasSessionKnown_ = false;
};

}  // namespace marrowby
