// SPDX-License-Identifier: Apache-2.0
#include "UnlockCore/Storage/StorageError.h"

namespace marrowby {

std::string description(VaultError error, const PlatformWords& words) {
    switch (error) {
        case VaultError::locked:
            return translated("Marrowby Unlock needs your {check} first.",
                              {{"check", words.ownerCheck.yours}});
        case VaultError::keyMissingButDataExists:
            return translated(
                "The key for your saved face and password is missing, but they’re still saved. "
                "Nothing was deleted. Remove them in Settings to start again.");
        case VaultError::badKey:
            return translated("The saved key isn’t a key Marrowby Unlock made.");
        case VaultError::sealFailed:
            return translated("Couldn’t encrypt.");
        case VaultError::openFailed:
            return translated("Couldn’t decrypt: the saved data may be damaged.");
        case VaultError::unknownFormat:
            return translated("The saved data is in a format this version doesn’t know.");
    }
    return {};
}

namespace {

struct DescribeFaceStore {
    std::string operator()(const FaceStoreError::Unreadable& error) const {
        return translated(
            "Your saved face couldn’t be read, so nothing was changed (writing now would replace "
            "it). {reason}",
            {{"reason", error.reason}});
    }
    std::string operator()(const FaceStoreError::NotLoaded& /*unused*/) const {
        return translated("Your saved face hasn’t been opened yet.");
    }
    std::string operator()(const FaceStoreError::EmptyEnrolment& /*unused*/) const {
        return translated("Nothing was captured.");
    }
};

}  // namespace

std::string description(const FaceStoreError& error) {
    return std::visit(DescribeFaceStore{}, error);
}

std::string description(const FaceIdentityCodingError& error) {
    return translated("The saved face isn’t in the expected format: {reason}.",
                      {{"reason", error.reason}});
}

Phrase description(CredentialError error) {
    switch (error) {
        case CredentialError::empty:
            return Phrase("The password is empty.");
        case CredentialError::none:
            return Phrase("No password is saved.");
    }
    return {};
}

namespace {

struct Describe {
    const PlatformWords& words;

    // The system's errors carry their localized text.
    std::string operator()(const OwnerCheckFailure& error) const { return error.message; }
    std::string operator()(const FileError& error) const { return error.message; }
    std::string operator()(VaultError error) const { return description(error, words); }
    std::string operator()(const KeychainError& error) const { return description(error, words); }
    std::string operator()(const OwnerCheckError& error) const { return description(error, words); }
    std::string operator()(CredentialError error) const { return translated(description(error)); }
    std::string operator()(SecretMemoryError error) const { return translated(description(error)); }
    template <typename Error>
    std::string operator()(const Error& error) const {
        return description(error);
    }
};

}  // namespace

std::string description(const StorageError& error, const PlatformWords& words) {
    return std::visit(Describe{.words = words}, error);
}

}  // namespace marrowby
