#include "UnlockCore/Storage/StorageError.h"

#include <utility>

#include <gtest/gtest.h>

namespace marrowby {
namespace {

TEST(StorageError, saysItsSentence) {
    const std::pair<StorageError, const char*> cases[] = {
        {VaultError::locked, "Marrowby Unlock needs your Touch ID or password first."},
        {VaultError::keyMissingButDataExists,
         "The key for your saved face and password is missing, but they’re still saved. Nothing "
         "was "
         "deleted. Remove them in Settings to start again."},
        {VaultError::badKey, "The saved key isn’t a key Marrowby Unlock made."},
        {VaultError::sealFailed, "Couldn’t encrypt."},
        {VaultError::openFailed, "Couldn’t decrypt: the saved data may be damaged."},
        {VaultError::unknownFormat, "The saved data is in a format this version doesn’t know."},
        {KeychainError(KeychainError::Status{.code = -61, .message = "Not allowed."}),
         "Keychain: Not allowed."},
        {KeychainError(KeychainError::Status{.code = -61, .message = {}}), "Keychain: error -61"},
        {KeychainError(KeychainError::UnexpectedData{}),
         "The keychain item isn’t in the expected format."},
        {OwnerCheckError(OwnerCheckError::Cancelled{}), "Cancelled."},
        {OwnerAuthenticationError{.code = 1, .message = "Locked out."}, "Locked out."},
        {FileError{.code = 28, .message = "No space left."}, "No space left."},
        {FaceStoreError(FaceStoreError::NotLoaded{}), "Your saved face hasn’t been opened yet."},
        {FaceStoreError(FaceStoreError::EmptyEnrolment{}), "Nothing was captured."},
        {CredentialError::empty, "The password is empty."},
        {CredentialError::none, "No password is saved."},
    };
    for (const auto& [error, sentence] : cases)
        EXPECT_EQ(description(error), sentence);
}

}  // namespace
}  // namespace marrowby
