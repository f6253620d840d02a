#pragma once

#include "UnlockCore/Platform/Directory.h"

#include <string>

namespace marrowby {

/// The accounts as PAM checks them for this user: their own password only. Where PAM tells why it
/// refuses, or refuses before it was given the password, that is no wrong password. The system's
/// usual modules say the same of a wrong password, a locked account and another's. Any thread.
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
