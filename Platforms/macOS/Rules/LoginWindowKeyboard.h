#pragma once

#include <optional>
#include <string>

namespace marrowby {

/// What a Mac tells about whom keys go to, at one moment.
struct KeyboardFacts {
    /// Some password field keeps what is typed from everybody else.
    bool isInputSecure = false;
    /// The bundle identifier of the application in front; empty where it has none. Nothing where no
    /// application is in front.
    std::optional<std::string> frontApplication;
};

/// Whether that can be the login window: it is in front, or nobody is, and a password field has the
/// keys. Not a proof: an application that may not come to the front can have secure input, too.
[[nodiscard]] bool isLoginWindowsKeyboard(const KeyboardFacts& facts);

}  // namespace marrowby
