// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Platform/SystemSettings.h"

#include <vector>

namespace marrowby {

/// Settings that note which pane was opened.
class FakeSystemSettings final : public SystemSettings {
  public:
    std::vector<Pane> opened;
    bool atLogin = false;

    bool open(Pane pane) override {
        opened.push_back(pane);
        return true;
    }
    [[nodiscard]] bool opensAtLogin() const override { return atLogin; }
    bool setOpensAtLogin(bool opens) override {
        atLogin = opens;
        return true;
    }
};

}  // namespace marrowby
