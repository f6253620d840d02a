// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Engine/UnlockFailure.h"

#include <variant>

namespace marrowby {

namespace overlayphase {

struct Failure {
    UnlockFailure failure;
    friend bool operator==(const Failure&, const Failure&) = default;
};
struct Hidden {
    friend bool operator==(const Hidden&, const Hidden&) = default;
};
struct Closed {
    friend bool operator==(const Closed&, const Closed&) = default;
};
struct Scanning {
    friend bool operator==(const Scanning&, const Scanning&) = default;
};
struct Prompt {
    friend bool operator==(const Prompt&, const Prompt&) = default;
};
struct Success {
    friend bool operator==(const Success&, const Success&) = default;
};
/// Animates away; hidden afterwards.
struct Leaving {
    friend bool operator==(const Leaving&, const Leaving&) = default;
};

}  // namespace overlayphase

/// What the island in the notch is to show.
struct OverlayPhase
    : std::variant<overlayphase::Failure, overlayphase::Hidden, overlayphase::Closed,
                   overlayphase::Scanning, overlayphase::Prompt, overlayphase::Success,
                   overlayphase::Leaving> {
    using Failure = overlayphase::Failure;
    using Hidden = overlayphase::Hidden;
    using Closed = overlayphase::Closed;
    using Scanning = overlayphase::Scanning;
    using Prompt = overlayphase::Prompt;
    using Success = overlayphase::Success;
    using Leaving = overlayphase::Leaving;
    using variant::variant;
};

}  // namespace marrowby
