// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Platforms/macOS/Rules/Keychain.h"
#include "UnlockCore/Platform/VaultKeyStore.h"

#include <optional>
#include <string>
#include <string_view>

namespace marrowby {

/// The vault's key as a generic password in the file-based login keychain. The item has no access
/// control: the owner check guards the key.
class LoginKeychainKeyStore final : public VaultKeyStore {
  public:
    static constexpr const char* vaultAccount = "vault-key";
    /// The item's service name for a bundle identifier.
    [[nodiscard]] static std::string vaultService(std::optional<std::string_view> bundleIdentifier);

    LoginKeychainKeyStore(Keychain& keychain, std::string service,
                          std::string account = vaultAccount);

    /// False on any failure.
    [[nodiscard]] bool hasKey() override;
    [[nodiscard]] std::expected<std::optional<SecretBytes>, KeychainError> loadKey() override;
    [[nodiscard]] std::expected<void, KeychainError> saveKey(
        std::span<const std::uint8_t> key) override;
    [[nodiscard]] std::expected<void, KeychainError> deleteKey() override;

  private:
    [[nodiscard]] KeychainQuery item() const;
    [[nodiscard]] std::unexpected<KeychainError> failure(KeychainStatus status) const;

    Keychain& keychain_;
    std::string service_;
    std::string account_;
};

}  // namespace marrowby
