// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Foundation/SecretBytes.h"
#include "UnlockCore/Platform/PlatformWords.h"

#include <cstdint>
#include <expected>
#include <optional>
#include <span>
#include <string>
#include <variant>

namespace marrowby {

namespace keychainerror {

struct Status {
    /// The system's; 0 where it has none.
    std::int32_t code = 0;
    /// The system's text; nothing where it has none.
    std::optional<std::string> message;
    friend bool operator==(const Status&, const Status&) = default;
};
struct UnexpectedData {
    friend bool operator==(const UnexpectedData&, const UnexpectedData&) = default;
};

}  // namespace keychainerror

struct KeychainError : std::variant<keychainerror::Status, keychainerror::UnexpectedData> {
    using Status = keychainerror::Status;
    using UnexpectedData = keychainerror::UnexpectedData;
    using variant::variant;
};

[[nodiscard]] std::string description(const KeychainError& error, const PlatformWords& words);

/// Where the vault's raw key persists. Any thread; may block.
class VaultKeyStore {
  public:
    virtual ~VaultKeyStore() = default;
    /// Either answer where it cannot be determined; loadKey() then fails.
    [[nodiscard]] virtual bool hasKey() = 0;
    /// Nothing where there is no key.
    [[nodiscard]] virtual std::expected<std::optional<SecretBytes>, KeychainError> loadKey() = 0;
    /// Creates or replaces.
    [[nodiscard]] virtual std::expected<void, KeychainError> saveKey(
        std::span<const std::uint8_t> key) = 0;
    /// Deleting a key that isn't there is success.
    [[nodiscard]] virtual std::expected<void, KeychainError> deleteKey() = 0;
};

}  // namespace marrowby
