#pragma once

#include "Platforms/macOS/Rules/Keychain.h"

namespace marrowby {

/// The keychain by way of SecItem calls. A call may block while the system asks the user to let
/// this application at the item: once after every build, unless Apple issued its certificate. What
/// was read stays for a moment in memory of the system's own, which cannot be wiped.
class SecurityKeychain final : public Keychain {
  public:
    [[nodiscard]] KeychainMatch copyMatching(const KeychainQuery& query) override;
    [[nodiscard]] KeychainStatus update(const KeychainQuery& query,
                                        const KeychainQuery& attributes) override;
    [[nodiscard]] KeychainStatus add(const KeychainQuery& attributes) override;
    [[nodiscard]] KeychainStatus remove(const KeychainQuery& query) override;
    [[nodiscard]] std::optional<std::string> message(KeychainStatus status) const override;
};

}  // namespace marrowby
