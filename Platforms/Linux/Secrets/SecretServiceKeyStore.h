// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Platform/VaultKeyStore.h"

#include <string>
#include <utility>

namespace marrowby {

/// The vault's key as a Secret Service item (freedesktop.org) in the default keyring. Each call
/// connects anew, so it recovers from a restarted bus or service. Never prompts: a locked keyring
/// is an error.
class SecretServiceKeyStore final : public VaultKeyStore {
  public:
    struct Item {
        std::string service = "app.quenby.unlock.vault";
        std::string account = "vault-key";
    };

    /// An empty address means no session bus.
    explicit SecretServiceKeyStore(std::string busAddress) : address_(std::move(busAddress)) {}
    SecretServiceKeyStore(std::string busAddress, Item item)
        : address_(std::move(busAddress)), item_(std::move(item)) {}

    /// True also when the keyring is unreadable: the key isn't known to be missing.
    [[nodiscard]] bool hasKey() override;
    [[nodiscard]] std::expected<std::optional<SecretBytes>, KeychainError> loadKey() override;
    [[nodiscard]] std::expected<void, KeychainError> saveKey(
        std::span<const std::uint8_t> key) override;
    [[nodiscard]] std::expected<void, KeychainError> deleteKey() override;

  private:
    class Conversation;

    const std::string address_;
    const Item item_;
};

}  // namespace marrowby
