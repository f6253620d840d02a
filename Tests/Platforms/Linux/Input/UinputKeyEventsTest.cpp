// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/Input/UinputKeyEvents.h"
#include "Tests/Platforms/Linux/TemporaryFolder.h"
#include "UnlockCore/Platform/KeyEvents.h"

#include <fstream>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <linux/input.h>
#include <xkbcommon/xkbcommon.h>

namespace marrowby {
namespace {

/// Reads our keys as a Wayland compositor would.
class Compositor final : public UinputKeyEvents::Keyboard {
  public:
    explicit Compositor(const char* layout) {
        const xkb_rule_names names{nullptr, nullptr, layout, nullptr, nullptr};
        keymap_.reset(
            xkb_keymap_new_from_names(context_.get(), &names, XKB_KEYMAP_COMPILE_NO_FLAGS));
        state_.reset(xkb_state_new(keymap_.get()));
    }

    [[nodiscard]] bool send(std::uint16_t type, std::uint16_t code, std::int32_t value) override {
        if (eventsUntilFailure && (*eventsUntilFailure)-- == 0) return false;
        if (type != EV_KEY) return true;
        const xkb_keycode_t key = code + 8U;
        if (value == 1) {
            char text[8] = {};
            xkb_state_key_get_utf8(state_.get(), key, text, sizeof text);
            typed += text;
        }
        xkb_state_update_key(state_.get(), key, value == 1 ? XKB_KEY_DOWN : XKB_KEY_UP);
        return true;
    }
    [[nodiscard]] bool holdsModifiers() const {
        return xkb_state_serialize_mods(state_.get(), XKB_STATE_MODS_EFFECTIVE) != 0;
    }

    std::string typed;
    std::optional<int> eventsUntilFailure;

  private:
    struct Release {
        void operator()(xkb_context* context) const { xkb_context_unref(context); }
        void operator()(xkb_keymap* keymap) const { xkb_keymap_unref(keymap); }
        void operator()(xkb_state* state) const { xkb_state_unref(state); }
    };
    std::unique_ptr<xkb_context, Release> context_{xkb_context_new(XKB_CONTEXT_NO_FLAGS)};
    std::unique_ptr<xkb_keymap, Release> keymap_;
    std::unique_ptr<xkb_state, Release> state_;
};

struct Typist {
    explicit Typist(const char* layout)
        : compositor(std::make_shared<Compositor>(layout)),
          keys(
              {.model = {}, .layout = layout, .variant = {}, .options = {}},
              [this] { return !questionsUntilUnlocked || (*questionsUntilUnlocked)-- > 0; },
              [](TimeInterval) {}, [this] { return compositor; }) {}
    std::optional<int> questionsUntilUnlocked;
    std::shared_ptr<Compositor> compositor;
    UinputKeyEvents keys;
};

TEST(UinputKeyEvents, typesWhatTheLayoutHasAndRefusesOtherTexts) {
    const struct {
        const char* layout;
        const char16_t* text;
        const char* typed;
    } cases[] = {
        {"us", u"Tr0ub4dor&3 $`'\"\\{}~^|yZ", "Tr0ub4dor&3 $`'\"\\{}~^|yZ"},
        {"de", u"Größe yZ @{[]}\\~€|", "Größe yZ @{[]}\\~€|"},
        {"fr", u"aqQ1!é§@#{}€", "aqQ1!é§@#{}€"},
        {"ru", u"Пароль 1!", "Пароль 1!"},
        {"us", u"é", nullptr},
        {"de", u"字", nullptr},
        {"us", u"😀", nullptr},
        {"us", u"a\nb", nullptr},
    };
    for (const auto& [layout, text, typed] : cases) {
        Typist typist(layout);
        const auto source = typist.keys.makeSource(std::u16string_view(text), {});
        ASSERT_EQ(source != nullptr, typed != nullptr) << layout;
        if (!source) continue;
        EXPECT_TRUE(source->postText(std::u16string_view(text), true));
        EXPECT_TRUE(source->postText(std::u16string_view(text), false));
        EXPECT_EQ(typist.compositor->typed, typed);
        EXPECT_FALSE(typist.compositor->holdsModifiers());
    }
}

TEST(UinputKeyEvents, pressesTheKeysOfAPlan) {
    Typist typist("de");
    const std::vector<EditingKey> keys{EditingKey::shift, EditingKey::control, EditingKey::letterU,
                                       EditingKey::enter};
    const auto source = typist.keys.makeSource({}, keys);
    ASSERT_TRUE(source);
    EXPECT_TRUE(source->post({.key = EditingKey::control, .down = true}));
    EXPECT_TRUE(typist.compositor->holdsModifiers());
    EXPECT_TRUE(source->post({.key = EditingKey::letterU, .down = true}));
    EXPECT_EQ(typist.compositor->typed, "\x15");
    EXPECT_TRUE(source->post({.key = EditingKey::letterU, .down = false}));
    EXPECT_TRUE(source->post({.key = EditingKey::control, .down = false}));
    EXPECT_FALSE(typist.compositor->holdsModifiers());
}

TEST(UinputKeyEvents, checksTheGuardBeforeEveryKeyAndStopsForGoodOnARefusal) {
    const std::vector<EditingKey> keys{EditingKey::enter};
    for (std::size_t asked = 0; asked < 4; ++asked) {
        Typist typist("us");
        typist.questionsUntilUnlocked = static_cast<int>(asked);
        const std::u16string text = u"ABC";
        const auto source = typist.keys.makeSource(text, keys);
        ASSERT_TRUE(source);
        EXPECT_EQ(source->postText(text, true), asked == 3);
        EXPECT_EQ(typist.compositor->typed, std::string("ABC").substr(0, asked));
        // Locked again, perhaps by another session: still refused.
        if (asked < 3) typist.questionsUntilUnlocked.reset();
        EXPECT_FALSE(source->post({.key = EditingKey::enter, .down = true}));
        EXPECT_FALSE(source->isUndisturbed());
        EXPECT_FALSE(typist.compositor->holdsModifiers());
    }
}

TEST(UinputKeyEvents, reportsALostOrForbiddenKeyboard) {
    Typist typist("us");
    const std::u16string text = u"AB";
    const auto source = typist.keys.makeSource(text, {});
    ASSERT_TRUE(source);
    typist.compositor->eventsUntilFailure = 3;
    EXPECT_FALSE(source->postText(text, true));

    const auto yes = [] { return true; };
    UinputKeyEvents unplugged({}, yes, [](TimeInterval) {}, [] { return nullptr; });
    EXPECT_FALSE(unplugged.isTrusted());
    EXPECT_FALSE(unplugged.makeSource(text, {}));
    UinputKeyEvents unknown(
        {.model = {}, .layout = "no such layout", .variant = {}, .options = {}}, yes,
        [](TimeInterval) {}, [&] { return typist.compositor; });
    EXPECT_FALSE(unknown.isTrusted());
}

TEST(KeyboardLayout, readsItsNamesFromTheSystemsFile) {
    const TemporaryFolder folder;
    const std::string path = folder.path() / "keyboard";
    std::ofstream(path)
        << "# comment\nXKBMODEL=\"pc105\"\nXKBLAYOUT=de\nXKBVARIANT=\"nodeadkeys\"\n"
           "XKBOPTIONS=\"\"\nnonsense\n";
    const auto names = KeyboardLayout::Names::fromFile(path);
    EXPECT_EQ(names.model + "/" + names.layout + "/" + names.variant + "/" + names.options,
              "pc105/de/nodeadkeys/");
    const auto layout = KeyboardLayout::create(names);
    ASSERT_TRUE(layout);
    EXPECT_EQ(layout->chord(XKB_KEY_asciicircum), (KeyboardLayout::Chord{.key = KEY_GRAVE}));
}

}  // namespace
}  // namespace marrowby
