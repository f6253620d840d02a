// SPDX-License-Identifier: Apache-2.0
#include "UnlockCore/Platform/VaultKeyStore.h"

#include "UnlockCore/Foundation/Phrase.h"

namespace marrowby {

namespace {

struct DescribeKeychainError {
    const PlatformWords& words;

    std::string operator()(const KeychainError::Status& status) const {
        const std::string message = status.message
                                        ? *status.message
                                        : translated("error {number}", {{"number", status.code}});
        return translated("{keyStore}: {message}",
                          {{"keyStore", words.keyStore.atStart}, {"message", message}});
    }
    std::string operator()(const KeychainError::UnexpectedData& /*unused*/) const {
        return translated("The {keyStore} item isn’t in the expected format.",
                          {{"keyStore", words.keyStore.inSentence}});
    }
};

}  // namespace

std::string description(const KeychainError& error, const PlatformWords& words) {
    return std::visit(DescribeKeychainError{.words = words}, error);
}

}  // namespace marrowby
