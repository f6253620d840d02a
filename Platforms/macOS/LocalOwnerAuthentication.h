// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Platforms/macOS/Rules/OwnerAuthentication.h"

namespace marrowby {

/// Touch ID, a paired watch or the account password, through LocalAuthentication. Replies on a
/// framework thread. Exceptions, as for an empty reason, become errors in a domain of their name.
class LocalOwnerAuthentication final : public OwnerAuthentication {
  public:
    [[nodiscard]] std::shared_ptr<OwnerAuthenticationContext> makeContext() override;
};

}  // namespace marrowby
