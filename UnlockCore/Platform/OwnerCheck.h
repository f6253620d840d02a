// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Platform/PlatformWords.h"

#include <expected>
#include <functional>
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

struct OwnerCheckError : std::variant<ownercheckerror::Unavailable, ownercheckerror::Cancelled> {
    using Unavailable = ownercheckerror::Unavailable;
    using Cancelled = ownercheckerror::Cancelled;
    using variant::variant;
};

[[nodiscard]] std::string description(const OwnerCheckError& error, const PlatformWords& words);

/// Any other failure, in the system's words.
struct OwnerCheckFailure {
    std::string message;
    friend bool operator==(const OwnerCheckFailure&, const OwnerCheckFailure&) = default;
};

/// Confirms that the device's owner is there. Main thread.
class OwnerCheck {
  public:
    using Result = std::expected<void, std::variant<OwnerCheckError, OwnerCheckFailure>>;
    using Completion = std::function<void(const Result&)>;

    virtual ~OwnerCheck() = default;
    /// Whether the owner can be asked, without asking; or the system's explanation, which may be
    /// empty.
    [[nodiscard]] virtual std::expected<void, std::string> canConfirm() = 0;
    /// `reason` completes the sentence of the system's prompt. The completion comes once, on any
    /// thread, possibly before this returns.
    virtual void confirmOwner(const std::string& reason, Completion completion) = 0;
};

}  // namespace marrowby
