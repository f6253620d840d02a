// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Platforms/Linux/X11/XcbConnection.h"

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

#include <xcb/xproto.h>

namespace marrowby {

/// A snapshot of a display's keymap: the active group, without modifiers.
class XKeyLayout {
  public:
    /// `nullopt` when the display has no XKB keyboard.
    [[nodiscard]] static std::optional<XKeyLayout> read(const XcbConnection& connection);

    [[nodiscard]] std::optional<xcb_keycode_t> key(xcb_keysym_t keysym) const;
    /// Keys without symbols in any group that are no modifiers.
    [[nodiscard]] const std::vector<xcb_keycode_t>& freeKeys() const { return freeKeys_; }
    [[nodiscard]] const std::vector<xcb_keycode_t>& modifierKeys() const { return modifierKeys_; }
    /// Mask of the locked modifiers, such as Caps Lock.
    [[nodiscard]] std::uint8_t lockedModifiers() const { return lockedModifiers_; }

  private:
    XKeyLayout() = default;

    std::array<xcb_keysym_t, 256> keysyms_{};
    std::vector<xcb_keycode_t> freeKeys_;
    std::vector<xcb_keycode_t> modifierKeys_;
    std::uint8_t lockedModifiers_ = 0;
};

}  // namespace marrowby
