// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Foundation/SecretBytes.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <expected>
#include <span>
#include <vector>

namespace marrowby {

/// AES-256 in GCM mode (NIST SP 800-38D) with a 96-bit nonce and a 128-bit tag, and the system's
/// random numbers. Any thread.
class AuthenticatedCipher {
  public:
    static constexpr std::size_t keySize = 32;
    static constexpr std::size_t nonceSize = 12;
    static constexpr std::size_t tagSize = 16;
    using Key = std::span<const std::uint8_t, keySize>;
    using Nonce = std::span<const std::uint8_t, nonceSize>;

    enum class Failure {
        /// The library or the memory failed; says nothing about the data.
        unavailable,
        /// The tag does not belong to key, nonce, authenticated data and ciphertext.
        notAuthentic,
    };

    virtual ~AuthenticatedCipher() = default;

    /// False when the system has no random numbers; the buffer is then zero.
    [[nodiscard]] virtual bool random(std::span<std::uint8_t> bytes) = 0;

    /// Ciphertext, as long as the plaintext, followed by the tag.
    [[nodiscard]] virtual std::expected<std::vector<std::uint8_t>, Failure> seal(
        Key key, Nonce nonce, std::span<const std::uint8_t> authenticatedData,
        std::span<const std::uint8_t> plaintext) = 0;

    /// The plaintext, or nothing of it.
    [[nodiscard]] virtual std::expected<SecretBytes, Failure> open(
        Key key, Nonce nonce, std::span<const std::uint8_t> authenticatedData,
        std::span<const std::uint8_t> ciphertextAndTag) = 0;
};

}  // namespace marrowby
