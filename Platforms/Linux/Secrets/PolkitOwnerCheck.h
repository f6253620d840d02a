// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Platform/OwnerCheck.h"

#include <memory>
#include <string>
#include <vector>

namespace marrowby {

/// Asks for the user's password through the desktop's polkit agent; this process never sees it.
/// Shows the action's own message: only root may pass a reason. Main thread, under Qt's event loop.
class PolkitOwnerCheck final : public OwnerCheck {
  public:
    /// Defined in app.quenby.unlock.policy, which must be installed.
    static constexpr const char* action = "app.quenby.unlock.confirm-owner";

    /// `busAddress`: the system bus.
    explicit PolkitOwnerCheck(std::string busAddress);
    PolkitOwnerCheck(const PolkitOwnerCheck&) = delete;
    PolkitOwnerCheck& operator=(const PolkitOwnerCheck&) = delete;
    /// Closes open prompts, which count as cancelled.
    ~PolkitOwnerCheck() override;

    [[nodiscard]] std::expected<void, std::string> canConfirm() override;
    void confirmOwner(const std::string& reason, Completion completion) override;

  private:
    class Prompt;

    const std::string address_;
    std::vector<std::weak_ptr<Prompt>> prompts_;
};

}  // namespace marrowby
