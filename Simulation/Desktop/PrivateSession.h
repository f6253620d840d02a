// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Simulation/Desktop/ChildProcess.h"
#include "Simulation/Desktop/PrivateBus.h"
#include "Simulation/Desktop/PrivateDesktop.h"
#include "Simulation/Desktop/PrivateFolder.h"
#include "Simulation/Desktop/PrivateKeyring.h"

#include <expected>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace marrowby {

/// A private desktop session: a display with a window manager, a session bus with an unlocked
/// keyring and assistive technology, and the user’s folders. Its processes and files are removed
/// when this is destroyed or the creating thread ends. One thread.
class PrivateSession {
  public:
    /// Blocks until all answer, at most a minute each. The error is a sentence for the user.
    /// `formerHome` is copied, unless it is empty.
    [[nodiscard]] static std::expected<PrivateSession, std::string> create(
        const std::filesystem::path& formerHome = {}, const PrivateScreen& screen = {});

    [[nodiscard]] const std::string& displayName() const { return desktop_.displayName(); }
    [[nodiscard]] std::string busAddress() const { return bus_->address(); }
    /// The user’s home, and all that freedesktop.org’s base directories name.
    [[nodiscard]] const std::filesystem::path& home() const { return home_.path(); }
    /// NAME=value, for programs of this session.
    [[nodiscard]] std::vector<std::string> environment() const;

    /// Which of its programs has ended, as a sentence; nothing while all run.
    [[nodiscard]] std::optional<std::string> failure() const;

  private:
    PrivateSession(PrivateFolder home, PrivateDesktop desktop, int scale)
        : home_(std::move(home)), desktop_(std::move(desktop)), scale_(scale) {}
    /// environment() without the bus.
    [[nodiscard]] std::vector<std::string> displayVariables() const;
    [[nodiscard]] std::expected<void, std::string> startPrograms();

    PrivateFolder home_;
    PrivateDesktop desktop_;
    int scale_;
    /// Ended in reverse order.
    std::unique_ptr<PrivateBus> bus_;
    std::optional<PrivateKeyring> keyring_;
    std::optional<ChildProcess> windowManager_;
};

}  // namespace marrowby
