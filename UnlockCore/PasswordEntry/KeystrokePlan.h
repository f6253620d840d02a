// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Foundation/Phrase.h"
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

    [[nodiscard]] static KeystrokePlan make(std::span<const char16_t> units, FieldClearing clearing,
                                            const KeyPace& pace);

    /// Each key that such a plan may press beside the text, once.
    [[nodiscard]] static std::vector<EditingKey> keys(FieldClearing clearing);
};

namespace typablepassword {

/// The sentence for the user why this password (UTF-8) can't be typed at a lock screen; nothing
/// where it can.
[[nodiscard]] std::optional<Phrase> objection(std::span<const std::uint8_t> password);

}  // namespace typablepassword

}  // namespace marrowby
