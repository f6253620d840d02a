// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <compare>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace marrowby {

/// A 128-bit identifier, written as 8-4-4-4-12 upper-case hexadecimal digits.
struct UUID {
    std::array<std::uint8_t, 16> bytes{};

    /// A version 4 identifier (RFC 9562, section 5.4) from 16 random bytes.
    [[nodiscard]] static UUID fromRandomBytes(std::array<std::uint8_t, 16> random);
    /// Nothing unless the text is exactly the written form, in either letter case.
    [[nodiscard]] static std::optional<UUID> parse(std::string_view text);

    [[nodiscard]] std::string string() const;

    friend auto operator<=>(const UUID&, const UUID&) = default;
};

}  // namespace marrowby
