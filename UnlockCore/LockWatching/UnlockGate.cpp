// SPDX-License-Identifier: Apache-2.0
#include "UnlockCore/LockWatching/UnlockGate.h"

namespace marrowby {

std::string_view unlockgate::rawValue(Refusal refusal) {
    switch (refusal) {
        case Refusal::off:
            return "off";
        case Refusal::vaultLocked:
            return "vaultLocked";
        case Refusal::noPassword:
            return "noPassword";
        case Refusal::passwordRejected:
            return "passwordRejected";
        case Refusal::notLocked:
            return "notLocked";
        case Refusal::noAccessibility:
            return "noAccessibility";
        case Refusal::noMatch:
            return "noMatch";
        case Refusal::notLive:
            return "notLive";
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
