// SPDX-License-Identifier: Apache-2.0
#include "Tests/Fakes/BytesOf.h"
#include "UnlockCore/PasswordEntry/KeystrokePlan.h"

#include <cmath>
#include <cstdint>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include <gtest/gtest.h>

namespace marrowby {

namespace {

using namespace std::string_view_literals;

constexpr KeyPace pacedShortcuts{.tapsFirst = false, .shortcut = TimeInterval(0.012)};

/// One letter per kind with its figures, so that a whole plan can be read: "check", "+right!" (a
/// key down whose event says Command), "-right" (up), "T0+20" (text down), "t0+20" (up), ".12" (a
/// pause in milliseconds).
struct Spell {
    std::string operator()(const KeystrokeAction::Post& post) const {
        static const std::map<EditingKey, std::string> names{
            {EditingKey::shift, "shift"},      {EditingKey::control, "control"},
            {EditingKey::command, "command"},  {EditingKey::letterU, "U"},
            {EditingKey::rightArrow, "right"}, {EditingKey::backspace, "backspace"},
            {EditingKey::enter, "return"}};
        return (post.press.down ? "+" : "-") + names.at(post.press.key) +
               (post.press.withCommand ? "!" : "");
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

TEST(KeystrokePlan, clearsTypesAndEntersAtThePaceOfTheField) {
    const std::string typed = "check T0+6 .4 t0+6 .4 check +return .12 -return .12";
    const std::string typedAtOnce = "check T0+6 .0 t0+6 .0 check +return .0 -return .0";
    const KeyPace noWaits{
        .tapsFirst = false, .wake = {}, .shortcut = {}, .afterText = {}, .afterReturn = {}};
    struct Case {
        FieldClearing clearing;
        KeyPace pace;
        std::string before;
        std::string text;
    };
    for (const auto& [clearing, pace, before, text] : std::vector<Case>{
             {FieldClearing::toTheEndThenBack, pacedShortcuts,
              "+command! .12 +right! .12 -right! .12 -command .12 "
              "+command! .12 +backspace! .12 -backspace! .12 -command .12 ",
              typed},
             {FieldClearing::controlU,
              {},
              "+shift .30 -shift .30 .300 check +control .30 +U .30 -U .30 -control .30 ",
              typed},
             {FieldClearing::controlU, noWaits, "+control .0 +U .0 -U .0 -control .0 ",
              typedAtOnce},
         }) {
        std::string whole = "check ";
        whole.append(before).append(text);
        EXPECT_EQ(spelled(KeystrokePlan::make(u"secret"sv, clearing, pace)), whole);
    }
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
             KeystrokePlan::make(text, FieldClearing::toTheEndThenBack, {}).actions) {
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

TEST(TypablePassword, objectsToControlCharacters) {
    using namespace std::string_view_literals;
    for (const auto text : {"a\nb"sv, "\r"sv, "a\x7F"sv, "a\0b"sv, "\t"sv})
        EXPECT_TRUE(typablepassword::objection(bytesOf(text)));
    for (const auto text : {""sv, " "sv, "é ß ž字😀"sv})
        EXPECT_FALSE(typablepassword::objection(bytesOf(text)));
}

}  // namespace

}  // namespace marrowby
