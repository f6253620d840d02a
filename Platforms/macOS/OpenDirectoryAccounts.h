#pragma once

#include "Platforms/macOS/Rules/Directory.h"

namespace marrowby {

/// Accounts by way of OpenDirectory, which asks a service of the system and may wait for a server.
/// The framework takes a password as a string of its own, whose memory cannot be wiped. An
/// exception of the framework is an error without domain and text.
class OpenDirectoryAccounts final : public Directory {
  public:
    [[nodiscard]] Result<std::unique_ptr<Node>> openNode(std::uint32_t type) override;
};

}  // namespace marrowby
