#pragma once

#include "UnlockCore/Platform/Keychain.h"

#include <optional>
#include <string>
#include <variant>

namespace marrowby {

namespace keychainerror {

struct Status {
    KeychainStatus code = keychainSuccess;
    /// The system's text for the code; nothing where it has none.
    std::optional<std::string> message;
    friend bool operator==(const Status&, const Status&) = default;
};
struct UnexpectedData {
    friend bool operator==(const UnexpectedData&, const UnexpectedData&) = default;
};

}  // namespace keychainerror

/// Why the keychain didn't do what was asked.
struct KeychainError : std::variant<keychainerror::Status, keychainerror::UnexpectedData> {
    using Status = keychainerror::Status;
    using UnexpectedData = keychainerror::UnexpectedData;
    using variant::variant;
};

/// The sentence for the user.
[[nodiscard]] std::string description(const KeychainError& error);

}  // namespace marrowby
