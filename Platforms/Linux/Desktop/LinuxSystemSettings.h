// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Platform/FileSystem.h"
#include "UnlockCore/Platform/SystemSettings.h"

#include <filesystem>
#include <string>

namespace marrowby {

/// Opening at login through an autostart entry (freedesktop.org Desktop Application Autostart).
/// There are no permission panes to open: permissions are group memberships.
class LinuxSystemSettings final : public SystemSettings {
  public:
    /// The autostart entry passes this flag.
    static constexpr const char* atLoginFlag = "--at-login";

    /// `configHome`: the user's configuration folder; the entry starts `program`.
    LinuxSystemSettings(FileSystem& files, const std::filesystem::path& configHome,
                        std::filesystem::path program);

    bool open(Pane pane) override;
    /// False also when the desktop has disabled the entry (Hidden, X-GNOME-Autostart-enabled).
    [[nodiscard]] bool opensAtLogin() const override;
    bool setOpensAtLogin(bool opens) override;

  private:
    FileSystem& files_;
    const std::filesystem::path entry_;
    const std::filesystem::path program_;
};

}  // namespace marrowby
