// SPDX-License-Identifier: Apache-2.0
#include "UnlockCore/Foundation/Text.h"

#include <string>
#include <string_view>

#include <gtest/gtest.h>

namespace marrowby {
namespace {

std::span<const std::uint8_t> asBytes(std::string_view text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

TEST(Text, trimsUnicodeSpaceAtBothEndsOnly) {
    const std::pair<std::string_view, std::string_view> cases[] = {
        {"  Anna \n", "Anna"}, {"\u00A0Anna Maria\u2003", "Anna Maria"}, {" \r\n\t", ""}, {"", ""},
        {"\xFF x ", "\xFF x"},
    };
    for (const auto& [given, expected] : cases)
        EXPECT_EQ(trimmed(given), expected);
}

TEST(Text, decodesUTF8AsUTF16) {
    const auto units = decodeUTF8(asBytes("aé字😀"));
    ASSERT_TRUE(units);
    EXPECT_EQ(std::u16string(units->values().begin(), units->values().end()), u"aé字😀");
}

TEST(Text, refusesWhatIsNotWellFormed) {
    const std::string_view malformed[] = {
        "\xC3\x28",          // no continuation
        "abc\xE2\x82",       // cut off
        "\xC0\xAF",          // overlong
        "\xE0\x80\xAF",      // overlong
        "\xED\xA0\x80",      // a surrogate
        "\xF4\x90\x80\x80",  // above U+10FFFF
        "\x80",              // a continuation alone
        "\xFF",
    };
    for (const auto text : malformed) {
        EXPECT_FALSE(isValidUTF8(asBytes(text)));
        const auto units = decodeUTF8(asBytes(text));
        ASSERT_FALSE(units);
        EXPECT_EQ(units.error(), UTF16Error::malformed);
    }
}

}  // namespace
}  // namespace marrowby
