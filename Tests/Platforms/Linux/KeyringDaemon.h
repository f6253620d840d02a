#pragma once

#include "Tests/Platforms/Linux/PrivateBus.h"

#include <filesystem>
#include <string>

namespace marrowby {

/// A real keyring on a bus of a test, with its files in a folder of the test.
class KeyringDaemon {
  public:
    /// Keyrings of that folder are unlocked, or made, with the password; left alone where it is
    /// empty. Absent where the daemon is not installed or doesn't come up.
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
