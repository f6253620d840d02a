#pragma once

#include "Tests/Platforms/Linux/PrivateBus.h"

#include <filesystem>
#include <string>

namespace marrowby {

/// A real keyring daemon on a test's bus, with its files in a test's folder.
class KeyringDaemon {
  public:
    /// Creates or unlocks the folder's keyring with the password; leaves it alone if that is empty.
    /// Null when the daemon is not installed or does not start.
    [[nodiscard]] static std::unique_ptr<KeyringDaemon> start(const PrivateBus& bus,
                                                              const std::filesystem::path& home,
                                                              const std::string& password);

    void lock() const;

  private:
    KeyringDaemon(const PrivateBus& bus, PrivateBus::Program program)
        : bus_(bus), program_(std::move(program)) {}

    const PrivateBus& bus_;
    PrivateBus::Program program_;
};

inline constexpr const char* noKeyringDaemon = "Skipped: needs gnome-keyring.";

}  // namespace marrowby
