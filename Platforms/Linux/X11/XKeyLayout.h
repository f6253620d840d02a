#pragma once

#include "Platforms/Linux/X11/XcbConnection.h"

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

#include <xcb/xproto.h>

namespace marrowby {

/// What the keys of a display give at one moment, in the active group and without any modifier. A
/// value.
class XKeyLayout {
  public:
    /// Nothing where the display has no XKB keyboard.
    [[nodiscard]] static std::optional<XKeyLayout> read(const XcbConnection& connection);

    [[nodiscard]] std::optional<xcb_keycode_t> key(xcb_keysym_t keysym) const;
    /// Keys that give nothing in any group, and are no modifiers.
    [[nodiscard]] const std::vector<xcb_keycode_t>& freeKeys() const { return freeKeys_; }
    [[nodiscard]] const std::vector<xcb_keycode_t>& modifierKeys() const { return modifierKeys_; }
    /// The bits of the modifiers that are locked, as by Caps Lock.
    [[nodiscard]] std::uint8_t lockedModifiers() const { return lockedModifiers_; }

  private:
    XKeyLayout() = default;

    std::array<xcb_keysym_t, 256> keysyms_{};
    std::vector<xcb_keycode_t> freeKeys_;
    std::vector<xcb_keycode_t> modifierKeys_;
    std::uint8_t lockedModifiers_ = 0;
};

}  // namespace marrowby
