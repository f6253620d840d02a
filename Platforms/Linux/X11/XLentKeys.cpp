// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/X11/XLentKeys.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace marrowby {
namespace {

constexpr const char* noteName = "_MARROWBY_UNLOCK_LENT_KEYS";
/// The window and up to 256 keys.
constexpr std::uint32_t noteLength = 257;

/// Upper bound of the smallest requests that libxcb's output buffer may hold.
constexpr int requestsInBuffer = 16384 / 4;

void map(const XcbConnection& connection, xcb_keycode_t key, xcb_keysym_t keysym) {
    // The same on both levels, so that Shift does not matter.
    const std::array<xcb_keysym_t, 2> levels{keysym, keysym};
    xcb_change_keyboard_mapping(connection.get(), 1, key, levels.size(), levels.data());
}

void synchronize(const XcbConnection& connection) {
    (void)connection.reply<xcb_get_input_focus_reply>(xcb_get_input_focus(connection.get()));
}

/// Whether the key still has the symbols that lend() set; another program may have remapped it.
bool looksLent(const XcbConnection& connection, xcb_keycode_t key) {
    const auto mapping = connection.reply<xcb_get_keyboard_mapping_reply>(
        xcb_get_keyboard_mapping(connection.get(), key, 1));
    if (!mapping || mapping->keysyms_per_keycode < 2) return false;
    const auto* keysyms = xcb_get_keyboard_mapping_keysyms(mapping.get());
    return keysyms[0] != XCB_NO_SYMBOL && keysyms[0] == keysyms[1];
}

}  // namespace

void XLentKeys::note(const std::vector<xcb_keycode_t>& keys) {
    if (keys.empty()) return;
    keys_ = keys;
    xcb_connection_t* const xcb = connection_.get();
    witness_ = xcb_generate_id(xcb);
    xcb_create_window(xcb, 0, witness_, connection_.root(), 0, 0, 1, 1, 0,
                      XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, 0, nullptr);
    std::vector<std::uint32_t> items{witness_};
    items.insert(items.end(), keys_.begin(), keys_.end());
    xcb_change_property(xcb, XCB_PROP_MODE_REPLACE, connection_.root(), connection_.atom(noteName),
                        XCB_ATOM_CARDINAL, 32, static_cast<std::uint32_t>(items.size()),
                        items.data());
}

void XLentKeys::lend(xcb_keycode_t key, xcb_keysym_t keysym) const {
    map(connection_, key, keysym);
}

void XLentKeys::takeBack() {
    if (keys_.empty()) return;
    for (const auto key : keys_)
        map(connection_, key, XCB_NO_SYMBOL);
    keys_.clear();
    xcb_delete_property(connection_.get(), connection_.root(), connection_.atom(noteName));
    xcb_destroy_window(connection_.get(), witness_);
    for (int i = 0; i < requestsInBuffer; ++i)
        xcb_no_operation(connection_.get());
    synchronize(connection_);
}

void XLentKeys::repair(const XcbConnection& connection) {
    xcb_connection_t* const xcb = connection.get();
    const auto name = connection.atom(noteName);
    const auto property = connection.reply<xcb_get_property_reply>(
        xcb_get_property(xcb, 0, connection.root(), name, XCB_ATOM_CARDINAL, 0, noteLength));
    if (!property || property->format != 32) return;
    const std::span items(
        static_cast<const std::uint32_t*>(xcb_get_property_value(property.get())),
        static_cast<std::size_t>(xcb_get_property_value_length(property.get())) / 4);
    if (items.empty()) return;
    const auto witness = connection.reply<xcb_get_window_attributes_reply>(
        xcb_get_window_attributes(xcb, items.front()));
    if (witness) return;
    const auto* setup = xcb_get_setup(xcb);
    for (const auto item : items.subspan(1)) {
        if (item < setup->min_keycode || item > setup->max_keycode) continue;
        const auto key = static_cast<xcb_keycode_t>(item);
        if (looksLent(connection, key)) map(connection, key, XCB_NO_SYMBOL);
    }
    xcb_delete_property(xcb, connection.root(), name);
    synchronize(connection);
}

}  // namespace marrowby
