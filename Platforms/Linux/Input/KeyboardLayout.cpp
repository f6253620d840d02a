// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/Input/KeyboardLayout.h"

#include <array>
#include <cstddef>
#include <fstream>
#include <string_view>
#include <utility>

#include <xkbcommon/xkbcommon.h>

namespace marrowby {
namespace {

constexpr xkb_keycode_t kernelOffset = 8;
/// The highest XKB key code of a kernel keyboard.
constexpr xkb_keycode_t lastKey = 255;

struct Release {
    void operator()(xkb_context* context) const { xkb_context_unref(context); }
    void operator()(xkb_keymap* keymap) const { xkb_keymap_unref(keymap); }
};

}  // namespace

struct KeyboardLayout::Keymap {
    std::unique_ptr<xkb_context, Release> context;
    std::unique_ptr<xkb_keymap, Release> keymap;

    [[nodiscard]] xkb_mod_mask_t modifier(const char* name) const {
        const auto index = xkb_keymap_mod_get_index(keymap.get(), name);
        return index == XKB_MOD_INVALID ? 0 : xkb_mod_mask_t{1} << index;
    }

    /// The first modifier set for a level that needs only Shift and AltGr.
    [[nodiscard]] std::optional<Chord> reach(xkb_keycode_t key, xkb_level_index_t level) const {
        const xkb_mod_mask_t shift = modifier(XKB_MOD_NAME_SHIFT);
        // In some layouts the third-level key itself is mapped to this modifier.
        const xkb_mod_mask_t altGr = modifier("Mod5") | modifier("LevelThree");
        std::array<xkb_mod_mask_t, 16> ways{};
        const std::size_t count = xkb_keymap_key_get_mods_for_level(keymap.get(), key, 0, level,
                                                                    ways.data(), ways.size());
        for (std::size_t i = 0; i < count; ++i) {
            if ((ways.at(i) & ~(shift | altGr)) != 0) continue;
            return Chord{.key = static_cast<std::uint16_t>(key - kernelOffset),
                         .withShift = (ways.at(i) & shift) != 0,
                         .withAltGr = (ways.at(i) & altGr) != 0};
        }
        return std::nullopt;
    }
};

KeyboardLayout::Names KeyboardLayout::Names::fromFile(const std::string& path) {
    Names names;
    std::ifstream file(path);
    for (std::string line; std::getline(file, line);) {
        const auto equals = line.find('=');
        if (equals == std::string::npos) continue;
        std::string value = line.substr(equals + 1);
        std::erase_if(value, [](char c) { return c == '"' || c == '\'' || c == ' '; });
        const std::string_view key = std::string_view(line).substr(0, equals);
        if (key == "XKBMODEL") names.model = value;
        if (key == "XKBLAYOUT") names.layout = value;
        if (key == "XKBVARIANT") names.variant = value;
        if (key == "XKBOPTIONS") names.options = value;
    }
    return names;
}

std::optional<KeyboardLayout> KeyboardLayout::create(const Names& names) {
    auto keymap = std::make_unique<Keymap>();
    keymap->context.reset(xkb_context_new(XKB_CONTEXT_NO_FLAGS));
    if (!keymap->context) return std::nullopt;
    xkb_context_set_log_level(keymap->context.get(), XKB_LOG_LEVEL_CRITICAL);
    const xkb_rule_names ruleNames{.rules = nullptr,
                                   .model = names.model.c_str(),
                                   .layout = names.layout.c_str(),
                                   .variant = names.variant.c_str(),
                                   .options = names.options.c_str()};
    keymap->keymap.reset(
        xkb_keymap_new_from_names(keymap->context.get(), &ruleNames, XKB_KEYMAP_COMPILE_NO_FLAGS));
    if (!keymap->keymap) return std::nullopt;
    return KeyboardLayout(std::move(keymap));
}

KeyboardLayout::KeyboardLayout(std::unique_ptr<Keymap> keymap) : keymap_(std::move(keymap)) {}

KeyboardLayout::KeyboardLayout(KeyboardLayout&&) noexcept = default;

KeyboardLayout& KeyboardLayout::operator=(KeyboardLayout&&) noexcept = default;

KeyboardLayout::~KeyboardLayout() = default;

std::optional<KeyboardLayout::Chord> KeyboardLayout::chord(std::uint32_t keysym) const {
    xkb_keymap* keymap = keymap_->keymap.get();
    if (keysym == XKB_KEY_NoSymbol) return std::nullopt;
    const auto heldCount = [](const Chord& chord) {
        return (chord.withShift ? 1 : 0) + (chord.withAltGr ? 1 : 0);
    };
    std::optional<Chord> simplest;
    for (xkb_keycode_t key = kernelOffset + 1; key <= lastKey; ++key) {
        const auto levels = xkb_keymap_num_levels_for_key(keymap, key, 0);
        for (xkb_level_index_t level = 0; level < levels; ++level) {
            const xkb_keysym_t* keysyms = nullptr;
            if (xkb_keymap_key_get_syms_by_level(keymap, key, 0, level, &keysyms) != 1 ||
                keysyms[0] != keysym) {
                continue;
            }
            const auto chord = keymap_->reach(key, level);
            if (chord && (!simplest || heldCount(*chord) < heldCount(*simplest))) simplest = chord;
        }
    }
    return simplest;
}

}  // namespace marrowby
