#pragma once

#include "UnlockCore/Platform/FileSystem.h"
#include "UnlockCore/Platform/SystemSettings.h"

#include <filesystem>
#include <string>

namespace marrowby {

/// What a Linux desktop has of the system’s settings: an autostart entry (freedesktop.org’s Desktop
/// Application Autostart). Permissions are the account’s groups here, so there is nothing to open.
class LinuxSystemSettings final : public SystemSettings {
  public:
    /// Tells the program that the session started it.
    static constexpr const char* atLoginFlag = "--at-login";

    /// `configHome` is the user’s folder for settings; the entry starts `program`.
    LinuxSystemSettings(FileSystem& files, const std::filesystem::path& configHome,
                        std::filesystem::path program);

    bool open(Pane pane) override;
    /// Also where a desktop has switched the entry off in its own way.
    [[nodiscard]] bool opensAtLogin() const override;
    bool setOpensAtLogin(bool opens) override;

  private:
    FileSystem& files_;
    const std::filesystem::path entry_;
    const std::filesystem::path program_;
};

}  // namespace marrowby
