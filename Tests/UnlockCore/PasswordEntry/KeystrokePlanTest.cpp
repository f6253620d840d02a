#include "UnlockCore/PasswordEntry/KeystrokePlan.h"

#include <cmath>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include <gtest/gtest.h>

namespace marrowby {

namespace {

using namespace std::string_view_literals;

/// One letter per kind with its figures, so that a whole plan can be read: "check", "+55/100000" (a
/// key down with its flags), "-55" (up), "T0+20" (text down), "t0+20" (up), ".12" (a pause in
/// milliseconds).
struct Spell {
    std::string operator()(const KeystrokeAction::Post& post) const {
        char text[40];
        (void)std::snprintf(text, sizeof text, "%c%u/%llx", post.press.down ? '+' : '-',
                            post.press.code, static_cast<unsigned long long>(post.press.flags));
        return text;
    }
    std::string operator()(const KeystrokeAction::Text& text) const {
        return (text.down ? "T" : "t") + std::to_string(text.offset) + "+" +
               std::to_string(text.count);
    }
    std::string operator()(const KeystrokeAction::Pause& pause) const {
        return "." + std::to_string(std::lround(pause.duration.count() * 1000));
    }
    std::string operator()(const KeystrokeAction::LockCheck& /*check*/) const { return "check"; }
};

std::string spelled(const KeystrokePlan& plan) {
    std::string text;
    for (const auto& action : plan.actions) {
        text += (text.empty() ? "" : " ") + std::visit(Spell{}, action);
    }
    return text;
}

TEST(KeystrokePlan, clearsTypesAndEntersAtTheMacsLoginWindow) {
    EXPECT_EQ(spelled(KeystrokePlan::make(u"secret"sv, KeyDialect::macLoginWindow, {})),
              "check "
              "+55/100000 .12 +124/100000 .12 -124/100000 .12 -55/0 .12 "
              "+55/100000 .12 +51/100000 .12 -51/100000 .12 -55/0 .12 "
              "check T0+6 .4 t0+6 .4 "
              "check +36/0 .12 -36/0 .12");
}

TEST(KeystrokePlan, wakesClearsTypesAndEntersAtAnX11Locker) {
    EXPECT_EQ(spelled(KeystrokePlan::make(u"secret"sv, KeyDialect::x11Locker, {})),
              "check +65505/0 .30 -65505/0 .30 .300 "
              "check +65507/0 .30 +117/0 .30 -117/0 .30 -65507/0 .30 "
              "check T0+6 .4 t0+6 .4 "
              "check +65293/0 .12 -65293/0 .12");
}

TEST(KeystrokePlan, waitsForALockersFieldNoLongerThanItNeeds) {
    KeyPace pace{.tapsFirst = false, .wake = {}, .clearsField = true, .shortcut = {}};
    EXPECT_EQ(spelled(KeystrokePlan::make(u"secret"sv, KeyDialect::x11Locker, pace)),
              "check +65507/0 .0 +117/0 .0 -117/0 .0 -65507/0 .0 "
              "check T0+6 .4 t0+6 .4 "
              "check +65293/0 .12 -65293/0 .12");
    pace.clearsField = false;
    EXPECT_EQ(spelled(KeystrokePlan::make(u"secret"sv, KeyDialect::x11Locker, pace)),
              "check check T0+6 .4 t0+6 .4 check +65293/0 .12 -65293/0 .12");
}

TEST(KeystrokePlan, partsTextIntoChunksButNeverASurrogatePair) {
    struct Case {
        std::u16string text;
        std::vector<std::size_t> counts;
    };
    const auto letters = [](std::size_t count) { return std::u16string(count, u'a'); };
    const std::u16string emoji = u"😀";
    std::u16string elevenEmoji;
    for (int i = 0; i < 11; ++i)
        elevenEmoji += emoji;
    for (const auto& [text, counts] : std::vector<Case>{
             {u"", {}},
             {letters(20), {20}},
             {letters(21), {20, 1}},
             {letters(18) + emoji + u"b", {20, 1}},
             {letters(19) + emoji, {19, 2}},
             {u"a" + elevenEmoji, {19, 4}},
         }) {
        std::vector<std::size_t> seen;
        std::size_t end = 0;
        for (const auto& action :
             KeystrokePlan::make(text, KeyDialect::macLoginWindow, {}).actions) {
            const auto* chunk = std::get_if<KeystrokeAction::Text>(&action);
            if (chunk == nullptr || !chunk->down) continue;
            EXPECT_EQ(chunk->offset, end);
            end += chunk->count;
            seen.push_back(chunk->count);
        }
        EXPECT_EQ(seen, counts) << text.size();
    }
}

}  // namespace

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
