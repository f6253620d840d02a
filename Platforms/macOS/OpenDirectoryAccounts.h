// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Platforms/macOS/Rules/Directory.h"

namespace marrowby {

/// Accounts through OpenDirectory; may wait for a server. The framework copies the password into a
/// string that cannot be wiped. Exceptions become errors without domain and text.
class OpenDirectoryAccounts final : public Directory {
  public:
    [[nodiscard]] Result<std::unique_ptr<Node>> openNode(std::uint32_t type) override;
};

}  // namespace marrowby
