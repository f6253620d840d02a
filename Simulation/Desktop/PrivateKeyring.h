// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Simulation/Desktop/ChildProcess.h"
#include "Simulation/Desktop/PrivateBus.h"

#include <expected>
#include <filesystem>
#include <string>
#include <string_view>
#include <utility>

namespace marrowby {

/// A real keyring daemon on a private bus, which outlives it. One thread.
class PrivateKeyring {
  public:
    /// Blocks until it answers. Creates or unlocks the keyring in the folder with the password;
    /// leaves it alone if that is empty. The error is a sentence for the user.
    [[nodiscard]] static std::expected<PrivateKeyring, std::string> start(
        const PrivateBus& bus, const std::filesystem::path& home, std::string_view password);

    void lock() const;
    [[nodiscard]] bool isRunning() const { return daemon_.isRunning(); }

  private:
    PrivateKeyring(const PrivateBus& bus, ChildProcess daemon)
        : bus_(&bus), daemon_(std::move(daemon)) {}

    const PrivateBus* bus_;
    ChildProcess daemon_;
};

}  // namespace marrowby
