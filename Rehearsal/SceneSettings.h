#pragma once

#include "UnlockCore/Platform/SystemSettings.h"

namespace marrowby {

/// A system that grants everything and has no settings to open.
class SceneSettings final : public SystemSettings {
  public:
    bool open(Pane /*pane*/) override { return false; }
    [[nodiscard]] bool opensAtLogin() const override { return opensAtLogin_; }
    bool setOpensAtLogin(bool opens) override {
        opensAtLogin_ = opens;
        return true;
    }

  private:
    bool opensAtLogin_ = false;
};

}  // namespace marrowby
