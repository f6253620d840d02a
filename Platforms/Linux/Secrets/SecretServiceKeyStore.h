#pragma once

#include "UnlockCore/Platform/VaultKeyStore.h"

#include <string>
#include <utility>

namespace marrowby {

/// The vault's key as an item of the Secret Service (freedesktop.org) on the session bus, in the
/// default keyring. Each call is a conversation of its own, so that a bus or a service that comes
/// back is found again. It never asks the user: a locked keyring is an error.
class SecretServiceKeyStore final : public VaultKeyStore {
  public:
    /// The attributes by which the item is found.
    struct Item {
        std::string service = "app.quenby.unlock.vault";
        std::string account = "vault-key";
    };

    /// An empty address is no bus.
    explicit SecretServiceKeyStore(std::string busAddress) : address_(std::move(busAddress)) {}
    SecretServiceKeyStore(std::string busAddress, Item item)
        : address_(std::move(busAddress)), item_(std::move(item)) {}

    /// Also where the keyring can't be looked into: the key isn't known to be missing.
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
