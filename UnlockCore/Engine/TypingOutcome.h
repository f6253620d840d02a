// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Foundation/Phrase.h"
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
    /// For the log.
    std::optional<Date> firstKeyAt{};
    friend bool operator==(const Typed&, const Typed&) = default;
};
/// The desktop was asked to open the lock.
struct Asked {
    friend bool operator==(const Asked&, const Asked&) = default;
};
/// The desktop was not asked, or refused.
struct NotAsked {
    /// A sentence; may hold {detail}.
    Phrase reason;
    std::string detail{};
    friend bool operator==(const NotAsked&, const NotAsked&) = default;
};
/// Abandoned before the end, for example because the lock screen went away.
struct Stopped {
    friend bool operator==(const Stopped&, const Stopped&) = default;
};

}  // namespace typingoutcome

/// How one attempt to open the lock ended.
struct TypingOutcome
    : std::variant<typingoutcome::Failed, typingoutcome::Typed, typingoutcome::Stopped,
                   typingoutcome::Asked, typingoutcome::NotAsked> {
    using Failed = typingoutcome::Failed;
    using Typed = typingoutcome::Typed;
    using Stopped = typingoutcome::Stopped;
    using Asked = typingoutcome::Asked;
    using NotAsked = typingoutcome::NotAsked;
    using variant::variant;
};

}  // namespace marrowby
