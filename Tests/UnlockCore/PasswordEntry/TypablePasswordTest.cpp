#include "UnlockCore/PasswordEntry/TypablePassword.h"

#include <cstdint>
#include <span>
#include <string_view>

#include <gtest/gtest.h>

namespace marrowby {
namespace {

std::span<const std::uint8_t> bytesOf(std::string_view text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

TEST(TypablePassword, objectsToControlCharacters) {
    using namespace std::string_view_literals;
    for (const auto text : {"a\nb"sv, "\r"sv, "a\x7F"sv, "a\0b"sv, "\t"sv})
        EXPECT_TRUE(typablepassword::objection(bytesOf(text)));
    for (const auto text : {""sv, " "sv, "é ß ž字😀"sv})
        EXPECT_FALSE(typablepassword::objection(bytesOf(text)));
}

}  // namespace
}  // namespace marrowby
