#pragma once

namespace marrowby {

/// What must hold for the password to be typed.
struct UnlockConditions {
    bool isEnabled = false;
    bool vaultUnlocked = false;
    bool passwordSaved = false;
    bool screenLocked = false;
    /// This process may post keystrokes.
    bool accessibilityTrusted = false;
    bool faceMatched = false;
    bool livenessConfirmed = false;
    /// Typing is not suspended after the password was turned down.
    bool passwordTrusted = false;

    friend bool operator==(const UnlockConditions&, const UnlockConditions&) = default;
};

}  // namespace marrowby
