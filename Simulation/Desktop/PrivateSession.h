#pragma once

#include "Simulation/Desktop/ChildProcess.h"
#include "Simulation/Desktop/PrivateDesktop.h"
#include "Simulation/Desktop/PrivateFolder.h"

#include <expected>
#include <filesystem>
#include <string>
#include <vector>

namespace marrowby {

/// A private desktop session: a display with a window manager, a session bus with an unlocked
/// keyring and assistive technology, and the user’s folders. Its processes and files are removed
/// when this is destroyed or the creating thread ends. One thread.
class PrivateSession {
  public:
    /// Blocks until all answer, at most ten seconds each. The error is a sentence for the user.
    /// `formerHome` is copied, unless it is empty.
    [[nodiscard]] static std::expected<PrivateSession, std::string> create(
        const std::filesystem::path& formerHome = {}, const PrivateScreen& screen = {});

    [[nodiscard]] const std::string& displayName() const { return desktop_.displayName(); }
    [[nodiscard]] const std::string& busAddress() const { return busAddress_; }
    /// The user’s home, and all that freedesktop.org’s base directories name.
    [[nodiscard]] const std::filesystem::path& home() const { return home_.path(); }
    /// NAME=value, for programs of this session.
    [[nodiscard]] std::vector<std::string> environment() const;

  private:
    PrivateSession(PrivateFolder home, PrivateDesktop desktop, int scale)
        : home_(std::move(home)), desktop_(std::move(desktop)), scale_(scale) {}
    [[nodiscard]] std::expected<void, std::string> startBus();
    [[nodiscard]] std::expected<void, std::string> startKeyring();
    [[nodiscard]] std::expected<void, std::string> startWindowManager();
    [[nodiscard]] std::expected<void, std::string> awaitOwner(const std::string& service) const;

    PrivateFolder home_;
    PrivateDesktop desktop_;
    int scale_;
    std::string busAddress_;
    /// In start order; ended in reverse.
    std::vector<ChildProcess> programs_;
};

}  // namespace marrowby
