#pragma once

#include "UnlockCore/PasswordEntry/KeystrokeAction.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace marrowby {

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
    /// A dialog that a first key brings up takes no input before it stands.
    static constexpr TimeInterval wakePause{0.300};
    /// Whether the Mac's login window is woken as X11's lockers are. The first keys after its
    /// display wakes may be swallowed, which nobody has seen yet; it costs the pause.
    static constexpr bool wakesLoginWindow = false;

    /// `pace` is that of an X11 locker.
    [[nodiscard]] static KeystrokePlan make(std::span<const char16_t> units, KeyDialect dialect,
                                            const KeyPace& pace);

    /// The code of each key that a plan in this dialect may press beside the text, once.
    [[nodiscard]] static std::vector<std::uint32_t> codes(KeyDialect dialect);
};

}  // namespace marrowby
