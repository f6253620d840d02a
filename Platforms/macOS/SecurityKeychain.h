// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Platforms/macOS/Rules/Keychain.h"

namespace marrowby {

/// The keychain through SecItem calls. A call may block while the system asks the user for access
/// to the item: once per build, unless the signing certificate is Apple's. Read secrets stay for a
/// moment in system memory that cannot be wiped.
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
