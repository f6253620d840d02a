// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Foundation/Time.h"

#include <optional>
#include <string>
#include <variant>

namespace marrowby {

namespace typingoutcome {

struct Failed {
    std::string message;
    friend bool operator==(const Failed&, const Failed&) = default;
};
/// The password and Return were posted.
struct Typed {
    std::optional<Date> firstKeyAt{};
    friend bool operator==(const Typed&, const Typed&) = default;
};
/// Abandoned before the end, for example because the lock screen went away.
struct Stopped {
    friend bool operator==(const Stopped&, const Stopped&) = default;
};

}  // namespace typingoutcome

/// How one attempt to type the password ended.
struct TypingOutcome
    : std::variant<typingoutcome::Failed, typingoutcome::Typed, typingoutcome::Stopped> {
    using Failed = typingoutcome::Failed;
    using Typed = typingoutcome::Typed;
    using Stopped = typingoutcome::Stopped;
    using variant::variant;
};

}  // namespace marrowby
