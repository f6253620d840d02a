#pragma once

#include "UnlockCore/Platform/PasswordCheckResult.h"

#include <cstdint>
#include <span>

namespace marrowby {

/// Checks the login password of the user's account before it is saved. Any thread but the main
/// one; blocks.
class MacPasswordVerifying {
  public:
    virtual ~MacPasswordVerifying() = default;
    /// What is empty or not UTF-8 is incorrect, and nobody is asked.
    [[nodiscard]] virtual PasswordCheckResult check(std::span<const std::uint8_t> password) = 0;
};

}  // namespace marrowby
