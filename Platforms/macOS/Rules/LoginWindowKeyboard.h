// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <string>

namespace marrowby {

/// A snapshot of who receives keys.
struct KeyboardFacts {
    /// A password field has enabled secure input.
    bool isInputSecure = false;
    /// Bundle identifier of the frontmost application; empty if it has none, `nullopt` if no
    /// application is in front.
    std::optional<std::string> frontApplication;
};

/// Whether the login window may have the keyboard: secure input is on, and the login window or no
/// application is in front. Not a proof: a background application can enable secure input too.
[[nodiscard]] bool isLoginWindowsKeyboard(const KeyboardFacts& facts);

}  // namespace marrowby
