// SPDX-License-Identifier: Apache-2.0
#include "UnlockCore/LockWatching/UnlockGate.h"

namespace marrowby {

Phrase unlockgate::name(Refusal refusal) {
    switch (refusal) {
        case Refusal::off:
            return Phrase("off");
        case Refusal::vaultLocked:
            return Phrase("vaultLocked");
        case Refusal::noPassword:
            return Phrase("noPassword");
        case Refusal::passwordRejected:
            return Phrase("passwordRejected");
        case Refusal::notLocked:
            return Phrase("notLocked");
        case Refusal::noAccessibility:
            return Phrase("noAccessibility");
        case Refusal::noMatch:
            return Phrase("noMatch");
        case Refusal::notLive:
            return Phrase("notLive");
    }
    return {};
}

UnlockGate::Decision UnlockGate::decide(const UnlockConditions& conditions) {
    using Refuse = Decision::Refuse;
    if (!conditions.isEnabled) return Refuse{Refusal::off};
    if (!conditions.vaultUnlocked) return Refuse{Refusal::vaultLocked};
    if (!conditions.passwordSaved) return Refuse{Refusal::noPassword};
    if (!conditions.passwordTrusted) return Refuse{Refusal::passwordRejected};
    if (!conditions.screenLocked) return Refuse{Refusal::notLocked};
    if (!conditions.accessibilityTrusted) return Refuse{Refusal::noAccessibility};
    if (!conditions.faceMatched) return Refuse{Refusal::noMatch};
    if (!conditions.livenessConfirmed) return Refuse{Refusal::notLive};
    return Decision::Type{};
}

}  // namespace marrowby
