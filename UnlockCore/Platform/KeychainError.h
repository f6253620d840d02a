#pragma once

#include "UnlockCore/Platform/PlatformWords.h"

#include <cstdint>
#include <optional>
#include <string>
#include <variant>

namespace marrowby {

namespace keychainerror {

struct Status {
    /// The system's; 0 where it counts none.
    std::int32_t code = 0;
    /// The system's text; nothing where it has none.
    std::optional<std::string> message;
    friend bool operator==(const Status&, const Status&) = default;
};
struct UnexpectedData {
    friend bool operator==(const UnexpectedData&, const UnexpectedData&) = default;
};

}  // namespace keychainerror

/// Why the store of keys didn't do what was asked.
struct KeychainError : std::variant<keychainerror::Status, keychainerror::UnexpectedData> {
    using Status = keychainerror::Status;
    using UnexpectedData = keychainerror::UnexpectedData;
    using variant::variant;
};

/// The sentence for the user.
[[nodiscard]] std::string description(const KeychainError& error, const PlatformWords& words);

}  // namespace marrowby
