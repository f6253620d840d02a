// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Platform/MacPasswordVerifying.h"

#include <string>

namespace marrowby {

/// Checks the password of the user's own account through PAM. A refusal that PAM explains, or that
/// comes before it asks for the password, does not count as a wrong password. The usual modules
/// report a wrong password, a locked account and another user's account alike.
class PamPasswordVerifier final : public MacPasswordVerifying {
  public:
    struct Service {
        std::string name;
        /// Folder of the service's rules, if not the system's.
        std::string folder;
    };

    /// The application's own PAM service if installed, else the common one.
    [[nodiscard]] static Service installedService();

    explicit PamPasswordVerifier(std::string userName, Service service = installedService());

    [[nodiscard]] PasswordCheckResult check(std::span<const std::uint8_t> password) override;

  private:
    const std::string userName_;
    const Service service_;
};

}  // namespace marrowby
