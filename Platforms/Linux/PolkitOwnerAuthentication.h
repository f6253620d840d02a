#pragma once

#include "UnlockCore/Platform/OwnerAuthentication.h"

#include <memory>
#include <string>
#include <vector>

namespace marrowby {

/// Has polkit's agent on the desktop ask for the user's own password; it never comes here. Main
/// thread, under Qt's event loop. The prompt shows the action's message: only root may add a
/// reason.
class PolkitOwnerAuthentication final : public OwnerAuthentication {
  public:
    /// The action of app.quenby.unlock.policy, which lies among this system's polkit actions.
    static constexpr const char* action = "app.quenby.unlock.confirm-owner";

    // Codes of the errors, in the domain that the core knows; any other failure is 0.
    static constexpr std::int64_t refused = -1;
    static constexpr std::int64_t cancelledByUser = -2;
    static constexpr std::int64_t cancelledByApplication = -9;
    static constexpr std::int64_t notInteractive = -1004;

    /// Of the system bus.
    explicit PolkitOwnerAuthentication(std::string busAddress);
    PolkitOwnerAuthentication(const PolkitOwnerAuthentication&) = delete;
    PolkitOwnerAuthentication& operator=(const PolkitOwnerAuthentication&) = delete;
    /// Withdraws the prompts that are open; they count as cancelled.
    ~PolkitOwnerAuthentication() override;

    /// Withdraws its prompt when it goes.
    [[nodiscard]] std::shared_ptr<OwnerAuthenticationContext> makeContext() override;

  private:
    class Context;

    const std::string address_;
    std::vector<std::weak_ptr<Context>> contexts_;
};

}  // namespace marrowby
