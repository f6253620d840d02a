// SPDX-License-Identifier: Apache-2.0
#include "UnlockCore/Platform/VaultKeyStore.h"

namespace marrowby {

namespace {

struct DescribeKeychainError {
    const PlatformWords& words;

    std::string operator()(const KeychainError::Status& status) const {
        return std::string(words.keyStore.atStart) + ": " +
               (status.message ? *status.message : "error " + std::to_string(status.code));
    }
    std::string operator()(const KeychainError::UnexpectedData& /*unused*/) const {
        return "The " + std::string(words.keyStore.inSentence) +
               " item isn’t in the expected format.";
    }
};

}  // namespace

std::string description(const KeychainError& error, const PlatformWords& words) {
    return std::visit(DescribeKeychainError{.words = words}, error);
}

}  // namespace marrowby
