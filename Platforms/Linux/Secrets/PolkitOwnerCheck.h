#pragma once

#include "UnlockCore/Platform/OwnerCheck.h"

#include <memory>
#include <string>
#include <vector>

namespace marrowby {

/// Has polkit's agent on the desktop ask for the user's own password; it never comes here. Main
/// thread, under Qt's event loop. The prompt shows the action's message: only root may add a
/// reason.
class PolkitOwnerCheck final : public OwnerCheck {
  public:
    /// The action of app.quenby.unlock.policy, which lies among this system's polkit actions.
    static constexpr const char* action = "app.quenby.unlock.confirm-owner";

    /// Of the system bus.
    explicit PolkitOwnerCheck(std::string busAddress);
    PolkitOwnerCheck(const PolkitOwnerCheck&) = delete;
    PolkitOwnerCheck& operator=(const PolkitOwnerCheck&) = delete;
    /// Withdraws the prompts that are open; they count as cancelled.
    ~PolkitOwnerCheck() override;

    [[nodiscard]] std::expected<void, std::string> canConfirm() override;
    void confirmOwner(const std::string& reason, Completion completion) override;

  private:
    class Prompt;

    const std::string address_;
    std::vector<std::weak_ptr<Prompt>> prompts_;
};

}  // namespace marrowby
