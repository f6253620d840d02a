#include "UnlockCore/PasswordEntry/KeystrokeError.h"

namespace marrowby {

std::string_view description(KeystrokeError error) {
    switch (error) {
        case KeystrokeError::noAccessibility:
            return "Marrowby Unlock needs Accessibility to type your password at the lock screen.";
        case KeystrokeError::notLocked:
            return "The Mac isn’t locked any more, so nothing was typed.";
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
