// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace marrowby {

/// Maps keysyms to kernel keys in the first group of an XKB layout, with no lock modifiers. Any
/// thread.
class KeyboardLayout {
  public:
    /// XKB names (RMLVO); empty ones mean the system's defaults.
    struct Names {
        std::string model;
        std::string layout;
        std::string variant;
        std::string options;

        /// Parses /etc/default/keyboard or another file of shell assignments.
        [[nodiscard]] static Names fromFile(const std::string& path = "/etc/default/keyboard");
    };

    /// A key code of linux/input-event-codes.h and the modifiers to hold.
    struct Chord {
        std::uint16_t key = 0;
        bool withShift = false;
        bool withAltGr = false;
        friend bool operator==(const Chord&, const Chord&) = default;
    };

    /// `nullopt` for a layout unknown to XKB.
    [[nodiscard]] static std::optional<KeyboardLayout> create(const Names& names);
    KeyboardLayout(KeyboardLayout&&) noexcept;
    KeyboardLayout& operator=(KeyboardLayout&&) noexcept;
    ~KeyboardLayout();

    /// `nullopt` for keysyms that need dead keys or other modifiers, or that the layout lacks.
    [[nodiscard]] std::optional<Chord> chord(std::uint32_t keysym) const;

  private:
    struct Keymap;
    explicit KeyboardLayout(std::unique_ptr<Keymap> keymap);

    std::unique_ptr<Keymap> keymap_;
};

}  // namespace marrowby
