// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Foundation/SecretBytes.h"

#include <cstdint>
#include <expected>
#include <span>
#include <string>
#include <string_view>

namespace marrowby {

/// The text without white space and line breaks at both ends (ASCII's, and Unicode's space
/// separators).
[[nodiscard]] std::string trimmed(std::string_view text);

[[nodiscard]] bool isValidUTF8(std::span<const std::uint8_t> bytes);

enum class UTF16Error { malformed, noSecretMemory };

/// Strict UTF-8 (no surrogates, no overlong forms, nothing above U+10FFFF) as UTF-16 code units.
/// The units are secret: they are wiped with the returned value.
[[nodiscard]] std::expected<SecretUTF16, UTF16Error> decodeUTF8(
    std::span<const std::uint8_t> bytes);

/// Removes and returns the first character of well-formed, non-empty UTF-16.
[[nodiscard]] char32_t takeCharacter(std::span<const char16_t>& units);

}  // namespace marrowby
