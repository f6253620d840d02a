#pragma once

#include "UnlockCore/Platform/SystemSettings.h"

namespace marrowby {

/// System Settings, and the login items. The system may put off a login item until the user has
/// approved of it; until then it counts as not opened.
class AppKitSystemSettings final : public SystemSettings {
  public:
    /// Of Accessibility: has the system list this application there, too, and ask the user.
    bool open(Pane pane) override;
    [[nodiscard]] bool opensAtLogin() const override;
    bool setOpensAtLogin(bool opens) override;
};

}  // namespace marrowby
