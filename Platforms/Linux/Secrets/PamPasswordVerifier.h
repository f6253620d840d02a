#pragma once

#include "UnlockCore/Platform/MacPasswordVerifying.h"

#include <string>

namespace marrowby {

/// Checks a password as PAM does for this user: their own only. Where PAM tells why it refuses, or
/// refuses before it was given the password, that is no wrong password. The system's usual modules
/// say the same of a wrong password, a locked account and another's.
class PamPasswordVerifier final : public MacPasswordVerifying {
  public:
    struct Service {
        std::string name;
        /// Where its rules lie instead of the system's places.
        std::string folder;
    };

    /// The application's own rules where they are installed, or else those that the system's other
    /// services share.
    [[nodiscard]] static Service installedService();

    explicit PamPasswordVerifier(std::string userName, Service service = installedService());

    [[nodiscard]] PasswordCheckResult check(std::span<const std::uint8_t> password) override;

  private:
    const std::string userName_;
    const Service service_;
};

}  // namespace marrowby
