#pragma once

#include "UnlockCore/PasswordEntry/PasswordCheckResult.h"

#include <cstdint>
#include <span>

namespace marrowby {

/// Checks a login password before it is saved. Any thread but the main one; blocks.
class MacPasswordVerifying {
  public:
    virtual ~MacPasswordVerifying() = default;
    [[nodiscard]] virtual PasswordCheckResult check(std::span<const std::uint8_t> password) = 0;
};

}  // namespace marrowby
