// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/X11/XKeyLayout.h"

#include <algorithm>
#include <memory>
#include <span>

#include <xkbcommon/xkbcommon-x11.h>
#include <xkbcommon/xkbcommon.h>

namespace marrowby {

namespace {

template <auto release>
struct Release {
    template <typename T>
    void operator()(T* object) const {
        release(object);
    }
};

using Context = std::unique_ptr<xkb_context, Release<xkb_context_unref>>;
using Keymap = std::unique_ptr<xkb_keymap, Release<xkb_keymap_unref>>;
using State = std::unique_ptr<xkb_state, Release<xkb_state_unref>>;

bool givesNothing(xkb_keymap& keymap, xkb_keycode_t key) {
    for (xkb_layout_index_t group = 0; group < xkb_keymap_num_layouts_for_key(&keymap, key);
         ++group) {
        const auto levels = xkb_keymap_num_levels_for_key(&keymap, key, group);
        for (xkb_level_index_t level = 0; level < levels; ++level) {
            const xkb_keysym_t* keysyms = nullptr;
            if (xkb_keymap_key_get_syms_by_level(&keymap, key, group, level, &keysyms) > 0) {
                return false;
            }
        }
    }
    return true;
}

}  // namespace

std::optional<XKeyLayout> XKeyLayout::read(const XcbConnection& connection) {
    xcb_connection_t* display = connection.get();
    if (xkb_x11_setup_xkb_extension(
            display, XKB_X11_MIN_MAJOR_XKB_VERSION, XKB_X11_MIN_MINOR_XKB_VERSION,
            XKB_X11_SETUP_XKB_EXTENSION_NO_FLAGS, nullptr, nullptr, nullptr, nullptr) == 0) {
        return std::nullopt;
    }
    const Context context(xkb_context_new(XKB_CONTEXT_NO_FLAGS));
    const auto device = xkb_x11_get_core_keyboard_device_id(display);
    if (!context || device < 0) return std::nullopt;
    const Keymap keymap(xkb_x11_keymap_new_from_device(context.get(), display, device,
                                                       XKB_KEYMAP_COMPILE_NO_FLAGS));
    if (!keymap) return std::nullopt;
    const State state(xkb_x11_state_new_from_device(keymap.get(), display, device));
    const auto modifiers =
        connection.reply<xcb_get_modifier_mapping_reply>(xcb_get_modifier_mapping(display));
    if (!state || !modifiers) return std::nullopt;

    XKeyLayout layout;
    for (const auto key : std::span(
             xcb_get_modifier_mapping_keycodes(modifiers.get()),
             static_cast<std::size_t>(xcb_get_modifier_mapping_keycodes_length(modifiers.get())))) {
        if (key != 0) layout.modifierKeys_.push_back(key);
    }
    layout.lockedModifiers_ =
        static_cast<std::uint8_t>(xkb_state_serialize_mods(state.get(), XKB_STATE_MODS_LOCKED));
    const auto group = xkb_state_serialize_layout(state.get(), XKB_STATE_LAYOUT_EFFECTIVE);
    xkb_state_update_mask(state.get(), 0, 0, 0, 0, 0, group);
    const auto last = std::min<xkb_keycode_t>(xkb_keymap_max_keycode(keymap.get()), 255);
    for (auto key = xkb_keymap_min_keycode(keymap.get()); key <= last; ++key) {
        layout.keysyms_.at(key) = xkb_state_key_get_one_sym(state.get(), key);
        const auto code = static_cast<xcb_keycode_t>(key);
        if (givesNothing(*keymap, key) &&
            std::ranges::find(layout.modifierKeys_, code) == layout.modifierKeys_.end()) {
            layout.freeKeys_.push_back(code);
        }
    }
    return layout;
}

std::optional<xcb_keycode_t> XKeyLayout::key(xcb_keysym_t keysym) const {
    const auto found = std::ranges::find(keysyms_, keysym);
    if (keysym == XCB_NO_SYMBOL || found == keysyms_.end()) return std::nullopt;
    return static_cast<xcb_keycode_t>(found - keysyms_.begin());
}

}  // namespace marrowby
