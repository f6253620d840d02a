#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace marrowby {

/// A keyboard layout by its XKB names, and which keys of the kernel give what in its first group,
/// with no key locked. Any thread.
class KeyboardLayout {
  public:
    /// Empty ones are the system's defaults.
    struct Names {
        std::string model;
        std::string layout;
        std::string variant;
        std::string options;

        /// As /etc/default/keyboard or another file in the shell's form says.
        [[nodiscard]] static Names fromFile(const std::string& path = "/etc/default/keyboard");
    };

    /// A key by its code in linux/input-event-codes.h, and what is held meanwhile.
    struct Chord {
        std::uint16_t key = 0;
        bool withShift = false;
        bool withAltGr = false;
        friend bool operator==(const Chord&, const Chord&) = default;
    };

    /// Nothing where XKB has no such layout.
    [[nodiscard]] static std::optional<KeyboardLayout> create(const Names& names);
    KeyboardLayout(KeyboardLayout&&) noexcept;
    KeyboardLayout& operator=(KeyboardLayout&&) noexcept;
    ~KeyboardLayout();

    /// By keysym; nothing where it takes dead keys, other modifiers, or cannot be had.
    [[nodiscard]] std::optional<Chord> chord(std::uint32_t keysym) const;

  private:
    struct Keymap;
    explicit KeyboardLayout(std::unique_ptr<Keymap> keymap);

    std::unique_ptr<Keymap> keymap_;
};

}  // namespace marrowby
