// SPDX-License-Identifier: Apache-2.0
#include "UnlockCore/Storage/CredentialStore.h"

namespace marrowby {

std::expected<void, StorageError> CredentialStore::save(SecretBytes& password) {
    std::expected<void, StorageError> saved = std::unexpected(CredentialError::empty);
    if (!password.empty()) saved = file_.write(password.values(), vault_);
    password.wipe();
    return saved;
}

std::expected<SecretBytes, StorageError> CredentialStore::openPassword() const {
    if (!file_.exists()) return std::unexpected(CredentialError::none);
    auto password = file_.read(vault_);
    if (password) vault_.recordActivity();
    return password;
}

}  // namespace marrowby
