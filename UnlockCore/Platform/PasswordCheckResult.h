#pragma once

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

}  // namespace marrowby
