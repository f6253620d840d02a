// SPDX-License-Identifier: Apache-2.0
#include "Platforms/macOS/Rules/LoginKeychainKeyStore.h"

#include <utility>

namespace marrowby {

std::string LoginKeychainKeyStore::vaultService(std::optional<std::string_view> bundleIdentifier) {
    return std::string(bundleIdentifier.value_or("app.quenby.unlock")) + ".vault";
}

LoginKeychainKeyStore::LoginKeychainKeyStore(Keychain& keychain, std::string service,
                                             std::string account)
    : keychain_(keychain), service_(std::move(service)), account_(std::move(account)) {}

bool LoginKeychainKeyStore::hasKey() {
    KeychainQuery query = item();
    query[KeychainAttribute::returnAttributes] = true;
    query[KeychainAttribute::matchLimit] = KeychainConstant::matchLimitOne;
    return keychain_.copyMatching(query).status == keychainSuccess;
}

std::expected<std::optional<SecretBytes>, KeychainError> LoginKeychainKeyStore::loadKey() {
    KeychainQuery query = item();
    query[KeychainAttribute::returnData] = true;
    query[KeychainAttribute::matchLimit] = KeychainConstant::matchLimitOne;
    KeychainMatch match = keychain_.copyMatching(query);
    if (match.status == keychainItemNotFound) return std::nullopt;
    if (match.status != keychainSuccess) return failure(match.status);
    if (!match.data) return std::unexpected(KeychainError::UnexpectedData{});
    return std::move(match.data);
}

std::expected<void, KeychainError> LoginKeychainKeyStore::saveKey(
    std::span<const std::uint8_t> key) {
    KeychainStatus status = keychain_.update(item(), {{KeychainAttribute::valueData, key}});
    if (status == keychainItemNotFound) {
        KeychainQuery attributes = item();
        attributes[KeychainAttribute::valueData] = key;
        attributes[KeychainAttribute::label] = "Marrowby Unlock";
        attributes[KeychainAttribute::itemDescription] =
            "Encrypts Marrowby Unlock’s saved face and password";
        status = keychain_.add(attributes);
    }
    if (status != keychainSuccess) return failure(status);
    return {};
}

std::expected<void, KeychainError> LoginKeychainKeyStore::deleteKey() {
    const KeychainStatus status = keychain_.remove(item());
    if (status != keychainSuccess && status != keychainItemNotFound) return failure(status);
    return {};
}

KeychainQuery LoginKeychainKeyStore::item() const {
    return {
        {KeychainAttribute::itemClass, KeychainConstant::genericPassword},
        {KeychainAttribute::service, service_},
        {KeychainAttribute::account, account_},
        {KeychainAttribute::useDataProtectionKeychain, false},
    };
}

std::unexpected<KeychainError> LoginKeychainKeyStore::failure(KeychainStatus status) const {
    return std::unexpected<KeychainError>(
        KeychainError::Status{.code = status, .message = keychain_.message(status)});
}

}  // namespace marrowby
