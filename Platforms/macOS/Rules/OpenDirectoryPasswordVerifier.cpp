// SPDX-License-Identifier: Apache-2.0
#include "Platforms/macOS/Rules/OpenDirectoryPasswordVerifier.h"

#include "UnlockCore/Foundation/Text.h"

namespace marrowby {

PasswordCheckResult OpenDirectoryPasswordVerifier::check(std::span<const std::uint8_t> password) {
    if (password.empty() || !isValidUTF8(password)) return PasswordCheckResult::Incorrect{};
    const auto verified = verify(password);
    if (verified) return PasswordCheckResult::Correct{};
    const DirectoryError& error = verified.error();
    if (error.domain == directoryErrorDomain && error.code == directoryInvalidCredentials)
        return PasswordCheckResult::Incorrect{};
    return PasswordCheckResult::Unavailable{error.message};
}

Directory::Result<void> OpenDirectoryPasswordVerifier::verify(
    std::span<const std::uint8_t> password) const {
    const auto node = directory_.openNode(directoryAuthenticationNode);
    if (!node) return std::unexpected(node.error());
    const auto record = (*node)->record(directoryUserRecords, userName_);
    if (!record) return std::unexpected(record.error());
    return (*record)->verifyPassword(password);
}

}  // namespace marrowby
