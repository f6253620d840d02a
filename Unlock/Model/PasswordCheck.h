// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Unlock/Model/UnlockPlatform.h"
#include "UnlockCore/Foundation/SecretBytes.h"
#include "UnlockCore/Foundation/WeakSelf.h"

#include <expected>
#include <functional>
#include <memory>
#include <string>

namespace marrowby {

/// Checks that the account accepts a password and that it can be typed. Main thread; the platform
/// outlives it.
class PasswordCheck {
  public:
    /// The password, or the sentence for the user.
    using Result = std::expected<std::shared_ptr<SecretBytes>, std::string>;

    explicit PasswordCheck(const UnlockPlatform& platform) : platform_(platform) {}
    PasswordCheck(const PasswordCheck&) = delete;
    PasswordCheck& operator=(const PasswordCheck&) = delete;
    ~PasswordCheck() = default;

    /// Asks the account on a background queue. A refused password is overwritten before `then`,
    /// which is not called once this is destroyed.
    void check(SecretBytes password, std::function<void(const Result&)> then);

  private:
    const UnlockPlatform& platform_;
    WeakSelf<PasswordCheck> weakSelf_{this};
};

}  // namespace marrowby
