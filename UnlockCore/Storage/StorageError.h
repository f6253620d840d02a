#pragma once

#include "UnlockCore/Foundation/SecretPages.h"
#include "UnlockCore/Platform/FileSystem.h"
#include "UnlockCore/Platform/KeychainError.h"
#include "UnlockCore/Platform/OwnerCheck.h"
#include "UnlockCore/Platform/PlatformWords.h"
#include "UnlockCore/Storage/CredentialError.h"
#include "UnlockCore/Storage/FaceIdentityCodingError.h"
#include "UnlockCore/Storage/FaceStoreError.h"
#include "UnlockCore/Storage/VaultError.h"

#include <string>
#include <variant>

namespace marrowby {

/// Whatever opening the vault, or reading and writing what it protects, can meet; passed on
/// unchanged.
struct StorageError
    : std::variant<VaultError, KeychainError, OwnerCheckError, OwnerCheckFailure, FileError,
                   FaceStoreError, FaceIdentityCodingError, CredentialError, SecretMemoryError> {
    using variant::variant;
    friend bool operator==(const StorageError&, const StorageError&) = default;
};

/// The sentence for the user.
[[nodiscard]] std::string description(const StorageError& error, const PlatformWords& words);

}  // namespace marrowby
