// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Platform/AuthenticatedCipher.h"

namespace marrowby {

/// AES-256-GCM and random bytes from libcrypto.
class OpenSslCipher final : public AuthenticatedCipher {
  public:
    [[nodiscard]] bool random(std::span<std::uint8_t> bytes) override;
    [[nodiscard]] std::expected<std::vector<std::uint8_t>, Failure> seal(
        Key key, Nonce nonce, std::span<const std::uint8_t> authenticatedData,
        std::span<const std::uint8_t> plaintext) override;
    [[nodiscard]] std::expected<SecretBytes, Failure> open(
        Key key, Nonce nonce, std::span<const std::uint8_t> authenticatedData,
        std::span<const std::uint8_t> ciphertextAndTag) override;
};

}  // namespace marrowby
