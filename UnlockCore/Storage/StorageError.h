// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Foundation/Phrase.h"
#include "UnlockCore/Foundation/SecretBytes.h"
#include "UnlockCore/Platform/FileSystem.h"
#include "UnlockCore/Platform/OwnerCheck.h"
#include "UnlockCore/Platform/PlatformWords.h"
#include "UnlockCore/Platform/VaultKeyStore.h"

#include <string>
#include <string_view>
#include <variant>

namespace marrowby {

/// Why the vault can't give, make or use its key.
enum class VaultError {
    locked,
    keyMissingButDataExists,
    badKey,
    sealFailed,
    openFailed,
    unknownFormat,
};

[[nodiscard]] std::string description(VaultError error, const PlatformWords& words);

namespace facestoreerror {

struct Unreadable {
    /// The sentence of the error that reading met.
    std::string reason;
    friend bool operator==(const Unreadable&, const Unreadable&) = default;
};
struct NotLoaded {
    friend bool operator==(const NotLoaded&, const NotLoaded&) = default;
};
struct EmptyEnrolment {
    friend bool operator==(const EmptyEnrolment&, const EmptyEnrolment&) = default;
};

}  // namespace facestoreerror

struct FaceStoreError : std::variant<facestoreerror::Unreadable, facestoreerror::NotLoaded,
                                     facestoreerror::EmptyEnrolment> {
    using Unreadable = facestoreerror::Unreadable;
    using NotLoaded = facestoreerror::NotLoaded;
    using EmptyEnrolment = facestoreerror::EmptyEnrolment;
    using variant::variant;
};

[[nodiscard]] std::string description(const FaceStoreError& error);

/// Why text is not a list of enrolled faces, or a list can't be written as text.
struct FaceIdentityCodingError {
    std::string reason;
    friend bool operator==(const FaceIdentityCodingError&,
                           const FaceIdentityCodingError&) = default;
};

[[nodiscard]] std::string description(const FaceIdentityCodingError& error);

/// Why there is no password to save or to use.
enum class CredentialError { empty, none };

[[nodiscard]] Phrase description(CredentialError error);

/// Any error of opening the vault or of reading and writing what it protects.
struct StorageError
    : std::variant<VaultError, KeychainError, OwnerCheckError, OwnerCheckFailure, FileError,
                   FaceStoreError, FaceIdentityCodingError, CredentialError, SecretMemoryError> {
    using variant::variant;
    friend bool operator==(const StorageError&, const StorageError&) = default;
};

[[nodiscard]] std::string description(const StorageError& error, const PlatformWords& words);

}  // namespace marrowby
