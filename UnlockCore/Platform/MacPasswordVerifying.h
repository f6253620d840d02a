// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <variant>

namespace marrowby {

namespace passwordcheckresult {

/// The check couldn't be made: the password is neither accepted nor rejected.
struct Unavailable {
    /// The directory's explanation.
    std::string explanation;
    friend bool operator==(const Unavailable&, const Unavailable&) = default;
};
struct Correct {
    friend bool operator==(const Correct&, const Correct&) = default;
};
/// Rejected by the account, empty, or not UTF-8.
struct Incorrect {
    friend bool operator==(const Incorrect&, const Incorrect&) = default;
};

}  // namespace passwordcheckresult

struct PasswordCheckResult
    : std::variant<passwordcheckresult::Unavailable, passwordcheckresult::Correct,
                   passwordcheckresult::Incorrect> {
    using Unavailable = passwordcheckresult::Unavailable;
    using Correct = passwordcheckresult::Correct;
    using Incorrect = passwordcheckresult::Incorrect;
    using variant::variant;
};

/// Checks the login password of the user's account before it is saved. Any thread but the main
/// one; blocks.
class MacPasswordVerifying {
  public:
    virtual ~MacPasswordVerifying() = default;
    /// An empty or invalid UTF-8 password is incorrect without asking the system.
    [[nodiscard]] virtual PasswordCheckResult check(std::span<const std::uint8_t> password) = 0;
};

}  // namespace marrowby
