#pragma once

#include "UnlockCore/Foundation/Time.h"
#include "UnlockCore/Platform/KeyEvents.h"

#include <cstddef>
#include <variant>

namespace marrowby {

namespace keystrokeaction {

struct Post {
    KeyPress press;
    friend bool operator==(const Post&, const Post&) = default;
};
/// A piece of the text by its place, so that a plan holds no secret.
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
/// Give up here unless the screen is still locked, by the same locker, and nobody types.
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

}  // namespace marrowby
