// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Platforms/macOS/Rules/Directory.h"
#include "UnlockCore/Platform/MacPasswordVerifying.h"

#include <string>
#include <utility>

namespace marrowby {

/// Verifies a user's password with the directory service. The directory outlives it.
class OpenDirectoryPasswordVerifier final : public MacPasswordVerifying {
  public:
    /// `userName` is the account's short name.
    OpenDirectoryPasswordVerifier(Directory& directory, std::string userName)
        : directory_(directory), userName_(std::move(userName)) {}

    [[nodiscard]] PasswordCheckResult check(std::span<const std::uint8_t> password) override;

  private:
    [[nodiscard]] Directory::Result<void> verify(std::span<const std::uint8_t> password) const;

    Directory& directory_;
    const std::string userName_;
};

}  // namespace marrowby
