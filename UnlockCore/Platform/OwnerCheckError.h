#pragma once

#include "UnlockCore/Platform/PlatformWords.h"

#include <string>
#include <variant>

namespace marrowby {

namespace ownercheckerror {

struct Unavailable {
    /// The system's explanation; may be empty.
    std::string explanation;
    friend bool operator==(const Unavailable&, const Unavailable&) = default;
};
struct Cancelled {
    friend bool operator==(const Cancelled&, const Cancelled&) = default;
};

}  // namespace ownercheckerror

/// Why the device's owner wasn't confirmed.
struct OwnerCheckError : std::variant<ownercheckerror::Unavailable, ownercheckerror::Cancelled> {
    using Unavailable = ownercheckerror::Unavailable;
    using Cancelled = ownercheckerror::Cancelled;
    using variant::variant;
};

/// The sentence for the user.
[[nodiscard]] std::string description(const OwnerCheckError& error, const PlatformWords& words);

}  // namespace marrowby
