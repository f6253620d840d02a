#pragma once

#include "Platforms/macOS/Rules/OwnerAuthentication.h"

namespace marrowby {

/// Touch ID, a paired watch or the account password, by way of LocalAuthentication. Its reply comes
/// on a thread of the framework's own; an exception of the framework, as for an empty reason,
/// becomes an error in a domain of its name.
class LocalOwnerAuthentication final : public OwnerAuthentication {
  public:
    [[nodiscard]] std::shared_ptr<OwnerAuthenticationContext> makeContext() override;
};

}  // namespace marrowby
