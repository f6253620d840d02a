// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Foundation/Phrase.h"

#include <string_view>
#include <variant>

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

namespace unlockgate {

/// In order of precedence: what is set up, then the screen, then the right to type, then the
/// camera.
enum class Refusal {
    off,
    vaultLocked,
    noPassword,
    passwordRejected,
    notLocked,
    noAccessibility,
    noMatch,
    notLive
};

/// For log lines.
[[nodiscard]] Phrase name(Refusal refusal);

struct Refuse {
    Refusal refusal = Refusal::off;
    friend bool operator==(const Refuse&, const Refuse&) = default;
};
struct Type {
    friend bool operator==(const Type&, const Type&) = default;
};

struct Decision : std::variant<Refuse, Type> {
    using Refuse = unlockgate::Refuse;
    using Type = unlockgate::Type;
    using variant::variant;
};

}  // namespace unlockgate

/// Decides whether the password may be typed at this moment.
struct UnlockGate {
    using Refusal = unlockgate::Refusal;
    using Decision = unlockgate::Decision;

    [[nodiscard]] static Decision decide(const UnlockConditions& conditions);
};

}  // namespace marrowby
