#pragma once

#include "UnlockCore/Foundation/SecretBytes.h"
#include "UnlockCore/Platform/KeychainError.h"

#include <cstdint>
#include <expected>
#include <optional>
#include <span>

namespace marrowby {

/// Where the vault's raw key persists. Any thread; may block.
class VaultKeyStore {
  public:
    virtual ~VaultKeyStore() = default;
    /// Where that can’t be found out, either may be said: loading says why.
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
