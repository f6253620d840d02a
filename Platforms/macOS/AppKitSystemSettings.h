// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Platform/SystemSettings.h"

namespace marrowby {

/// System Settings and the login item. While the login item waits for the user's approval, it
/// counts as off.
class AppKitSystemSettings final : public SystemSettings {
  public:
    /// Opening Accessibility also lists this application there and prompts the user.
    bool open(Pane pane) override;
    [[nodiscard]] bool opensAtLogin() const override;
    bool setOpensAtLogin(bool opens) override;
};

}  // namespace marrowby
