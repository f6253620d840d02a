// SPDX-License-Identifier: Apache-2.0
#include "UnlockCore/Foundation/Text.h"

#include <cstddef>
#include <optional>

namespace marrowby {

namespace {

struct Scalar {
    char32_t value = 0;
    std::size_t length = 0;
};

/// The first scalar value of the bytes, by the well-formed sequences of the Unicode Standard, table
/// 3-7.
std::optional<Scalar> firstScalar(std::span<const std::uint8_t> bytes) {
    const std::uint8_t lead = bytes[0];
    if (lead < 0x80) return Scalar{lead, 1};

    std::size_t length = 0;
    std::uint8_t low = 0x80;
    std::uint8_t high = 0xBF;
    char32_t value = 0;
    if (lead >= 0xC2 && lead <= 0xDF) {
        length = 2;
        value = lead & 0x1F;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
        length = 3;
        value = lead & 0x0F;
        if (lead == 0xE0) low = 0xA0;
        if (lead == 0xED) high = 0x9F;
    } else if (lead >= 0xF0 && lead <= 0xF4) {
        length = 4;
        value = lead & 0x07;
        if (lead == 0xF0) low = 0x90;
        if (lead == 0xF4) high = 0x8F;
    } else {
        return std::nullopt;
    }
    if (bytes.size() < length) return std::nullopt;
    for (std::size_t i = 1; i < length; ++i) {
        if (bytes[i] < low || bytes[i] > high) return std::nullopt;
        value = value << 6 | (bytes[i] & 0x3F);
        low = 0x80;
        high = 0xBF;
    }
    return Scalar{value, length};
}

bool isSpace(char32_t c) {
    return (c >= 0x09 && c <= 0x0D) || c == 0x20 || c == 0x85 || c == 0xA0 || c == 0x1680 ||
           (c >= 0x2000 && c <= 0x200A) || c == 0x2028 || c == 0x2029 || c == 0x202F ||
           c == 0x205F || c == 0x3000;
}

std::span<const std::uint8_t> asBytes(std::string_view text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

}  // namespace

std::string trimmed(std::string_view text) {
    std::size_t begin = text.size();
    std::size_t end = 0;
    for (std::size_t i = 0; i < text.size();) {
        const auto scalar = firstScalar(asBytes(text).subspan(i));
        const std::size_t length = scalar ? scalar->length : 1;
        if (!scalar || !isSpace(scalar->value)) {
            if (begin > i) begin = i;
            end = i + length;
        }
        i += length;
    }
    return begin < end ? std::string(text.substr(begin, end - begin)) : std::string();
}

bool isValidUTF8(std::span<const std::uint8_t> bytes) {
    while (!bytes.empty()) {
        const auto scalar = firstScalar(bytes);
        if (!scalar) return false;
        bytes = bytes.subspan(scalar->length);
    }
    return true;
}

std::expected<SecretUTF16, UTF16Error> decodeUTF8(std::span<const std::uint8_t> bytes) {
    // UTF-16 never needs more units than UTF-8 needs bytes.
    auto units = SecretUTF16::create(bytes.size());
    if (!units) return std::unexpected(UTF16Error::noSecretMemory);
    std::size_t count = 0;
    while (!bytes.empty()) {
        const auto scalar = firstScalar(bytes);
        if (!scalar) return std::unexpected(UTF16Error::malformed);
        if (scalar->value < 0x10000) {
            units->values()[count++] = static_cast<char16_t>(scalar->value);
        } else {
            const char32_t offset = scalar->value - 0x10000;
            units->values()[count++] = static_cast<char16_t>(0xD800 + (offset >> 10));
            units->values()[count++] = static_cast<char16_t>(0xDC00 + (offset & 0x3FF));
        }
        bytes = bytes.subspan(scalar->length);
    }
    units->shrink(count);
    return std::move(*units);
}

char32_t takeCharacter(std::span<const char16_t>& units) {
    const char32_t first = units[0];
    const bool isPair = first >= 0xD800 && first <= 0xDBFF && units.size() > 1;
    const char32_t character =
        isPair ? 0x10000 + ((first - 0xD800) << 10) + (units[1] - char32_t{0xDC00}) : first;
    units = units.subspan(isPair ? 2 : 1);
    return character;
}

}  // namespace marrowby
