#pragma once

#include "UnlockCore/Platform/Directory.h"

#include <string>

namespace marrowby {

/// The accounts as PAM checks them for this user: their own password only. A refusal says the same
/// whether the password is wrong, the account locked or another's. Any thread.
class PamDirectory final : public Directory {
  public:
    struct Service {
        std::string name;
        /// Where its rules lie instead of the system's places.
        std::string folder;
    };

    /// The application's own rules where they are installed, or else those that the system's other
    /// services share.
    [[nodiscard]] static Service installedService();

    explicit PamDirectory(Service service = installedService());

    [[nodiscard]] Result<std::unique_ptr<Node>> openNode(std::uint32_t type) override;

  private:
    const Service service_;
};

}  // namespace marrowby
