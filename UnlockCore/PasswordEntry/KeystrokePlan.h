#pragma once

#include "UnlockCore/Foundation/Time.h"
#include "UnlockCore/Platform/KeyEvents.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <variant>
#include <vector>

namespace marrowby {

namespace keystrokeaction {

struct Post {
    KeyPress press;
    friend bool operator==(const Post&, const Post&) = default;
};
/// A piece of the text by its offset, so that a plan holds no secret.
struct Text {
    std::size_t offset = 0;
    std::size_t count = 0;
    bool down = false;
    friend bool operator==(const Text&, const Text&) = default;
};
struct Pause {
    TimeInterval duration{};
    friend bool operator==(const Pause&, const Pause&) = default;
};
/// Abort unless the screen is still locked by the same locker and nobody else types.
struct LockCheck {
    friend bool operator==(const LockCheck&, const LockCheck&) = default;
};

}  // namespace keystrokeaction

/// One step of typing a text into the lock screen.
struct KeystrokeAction : std::variant<keystrokeaction::Post, keystrokeaction::Text,
                                      keystrokeaction::Pause, keystrokeaction::LockCheck> {
    using Post = keystrokeaction::Post;
    using Text = keystrokeaction::Text;
    using Pause = keystrokeaction::Pause;
    using LockCheck = keystrokeaction::LockCheck;
    using variant::variant;
};

/// Every step of entering a text, in order: the field is cleared first, so that nothing in it can
/// stand before the password, then the text in chunks, then Return. Before each burst stands a lock
/// check.
struct KeystrokePlan {
    std::vector<KeystrokeAction> actions;

    /// The most UTF-16 units in one event; a surrogate pair is never parted.
    static constexpr std::size_t chunkLength = 20;
    /// After each event of an editing key, and of a chunk, at the Mac's login window.
    static constexpr TimeInterval editingPause{0.012};
    static constexpr TimeInterval chunkPause{0.004};
    /// A dialog raised by the first key takes no input until it is up.
    static constexpr TimeInterval wakePause{0.300};
    /// Whether the Mac's login window gets a waking key, as X11's lockers do. Off: lost first keys
    /// were never observed, and it costs the pause.
    static constexpr bool wakesLoginWindow = false;

    /// `pace` is that of an X11 locker.
    [[nodiscard]] static KeystrokePlan make(std::span<const char16_t> units, KeyDialect dialect,
                                            const KeyPace& pace);

    /// The code of each key that a plan in this dialect may press beside the text, once.
    [[nodiscard]] static std::vector<std::uint32_t> codes(KeyDialect dialect);
};

namespace typablepassword {

/// The sentence for the user why this password (UTF-8) can't be typed at a lock screen; nothing
/// where it can.
[[nodiscard]] std::optional<std::string_view> objection(std::span<const std::uint8_t> password);

}  // namespace typablepassword

}  // namespace marrowby
