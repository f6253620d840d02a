#include "UnlockCore/PasswordEntry/KeystrokeError.h"

namespace marrowby {

std::string description(KeystrokeError error, const PlatformWords& words) {
    switch (error) {
        case KeystrokeError::noAccessibility:
            return "Marrowby Unlock needs " + std::string(words.typing.right) +
                   " to type your password at the lock screen.";
        case KeystrokeError::notLocked:
            return "The " + std::string(words.computer) +
                   " isn’t locked any more, so nothing was typed.";
        case KeystrokeError::invalidText:
            return "The saved password isn’t valid text.";
        case KeystrokeError::eventFailed:
            return "Couldn’t make a key press.";
        case KeystrokeError::noLocker:
            return "Nothing was typed: no screen locker that Marrowby Unlock knows has the "
                   "keyboard.";
    }
    return {};
}

}  // namespace marrowby
