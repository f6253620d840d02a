#pragma once

#include "UnlockCore/Platform/SystemSettings.h"

#include <string>
#include <vector>

namespace marrowby {

/// Settings that note which pane was opened.
class FakeSystemSettings final : public SystemSettings {
  public:
    std::vector<Pane> opened;
    bool atLogin = false;

    [[nodiscard]] std::string location(Pane pane) const override {
        if (pane == Pane::inputMonitoring) return "Settings › Input Monitoring";
        return pane == Pane::camera ? "Settings › Camera" : "Settings › Accessibility";
    }
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
