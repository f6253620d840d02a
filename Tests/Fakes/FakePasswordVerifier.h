// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Platform/MacPasswordVerifying.h"

namespace marrowby {

/// An account whose verdict the test chooses.
class FakePasswordVerifier final : public MacPasswordVerifying {
  public:
    PasswordCheckResult verdict = PasswordCheckResult::Correct{};

    [[nodiscard]] PasswordCheckResult check(std::span<const std::uint8_t> /*password*/) override {
        return verdict;
    }
};

}  // namespace marrowby
