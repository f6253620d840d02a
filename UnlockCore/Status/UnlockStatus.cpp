// SPDX-License-Identifier: Apache-2.0
#include "UnlockCore/Status/UnlockStatus.h"

namespace marrowby {

namespace {

struct Title {
    const PlatformWords& words;

    std::string operator()(UnlockStatus::NotSetUp /*unused*/) const { return "Not set up yet"; }
    std::string operator()(UnlockStatus::PasswordNotSaved /*unused*/) const {
        return std::string(words.password.atStart) + " not saved";
    }
    std::string operator()(UnlockStatus::PasswordNeedsUpdate /*unused*/) const {
        return "Update your " + std::string(words.password.inSentence);
    }
    std::string operator()(UnlockStatus::Off /*unused*/) const { return "Off"; }
    std::string operator()(UnlockStatus::Paused /*unused*/) const { return "Paused"; }
    std::string operator()(UnlockStatus::CameraNotAllowed camera) const {
        return camera.wasAsked ? "Camera not allowed" : "Camera not allowed yet";
    }
    std::string operator()(UnlockStatus::AccessibilityOff /*unused*/) const {
        return std::string(words.typing.notAllowed);
    }
    std::string operator()(UnlockStatus::NoCamera /*unused*/) const { return "No camera found"; }
    std::string operator()(UnlockStatus::CannotOpen status) const {
        switch (status.fault) {
            case SavedDataFault::keyStoreAway:
                return std::string(words.keyStore.atStart) + " can’t be used";
            case SavedDataFault::keyMissing:
                return "The key to what was saved is gone";
            case SavedDataFault::faceDamaged:
                return "The saved face can’t be read";
            case SavedDataFault::passwordDamaged:
                return "The saved " + std::string(words.password.inSentence) + " can’t be read";
        }
        return {};
    }
    std::string operator()(UnlockStatus::NeedsTouchID /*unused*/) const {
        return "Needs " + std::string(words.ownerCheck.name) + " once this session";
    }
    std::string operator()(UnlockStatus::ModelsChanged /*unused*/) const {
        return "The models changed since your face was saved";
    }
    std::string operator()(UnlockStatus::NoLockerSeen /*unused*/) const {
        return "No screen locker has been seen yet";
    }
    std::string operator()(const UnlockStatus::LockerNotTypedInto& locker) const {
        return "Nothing is typed into “" + locker.name + "”";
    }
    std::string operator()(UnlockStatus::Ready /*unused*/) const { return "Ready"; }
    std::string operator()(UnlockStatus::NotPossible status) const {
        return status.opening == LockOpening::forbidden
                   ? "Not allowed on this " + std::string(words.computer)
                   : "Not supported on this desktop yet";
    }
    std::string operator()(UnlockStatus::NeedsConsent /*unused*/) const { return "Needs your yes"; }
    std::string operator()(UnlockStatus::SessionUnknown /*unused*/) const {
        return "This session isn’t known";
    }
};

struct Detail {
    std::string_view applicationName;
    const PlatformWords& words;
    LockOpening opening;

    /// What is saved besides the face.
    [[nodiscard]] std::string andPassword() const {
        if (opening != LockOpening::typing) return {};
        return " and your " + std::string(words.password.inSentence);
    }

    std::string operator()(UnlockStatus::NotSetUp /*unused*/) const {
        return "Save your face" + andPassword() + ", and it’s ready.";
    }
    std::string operator()(UnlockStatus::PasswordNotSaved /*unused*/) const {
        return "Your face is saved. Save your " + std::string(words.password.inSentence) +
               " to finish.";
    }
    std::string operator()(UnlockStatus::PasswordNeedsUpdate /*unused*/) const {
        return "The lock screen turned the saved one down twice, so typing it has stopped.";
    }
    std::string operator()(UnlockStatus::Off /*unused*/) const {
        return "The lock screen stays as it is. Turn it on above.";
    }
    std::string operator()(UnlockStatus::Paused /*unused*/) const {
        return "The lock screen stays as it is until the pause is over.";
    }
    std::string operator()(UnlockStatus::CameraNotAllowed camera) const {
        return camera.wasAsked ? words.camera.advice("Turned off in ")
                               : std::string(words.system) +
                                     " asks once. Allow it, so it can look for you at the lock "
                                     "screen.";
    }
    std::string operator()(UnlockStatus::AccessibilityOff /*unused*/) const {
        return words.accessibility.advice(
            "Needed to type your password at the lock screen: "
            "switch " +
            std::string(applicationName) + " on in ");
    }
    std::string operator()(UnlockStatus::NoCamera /*unused*/) const {
        return "It can’t look for you. Connect a camera, or switch on the one that is built in.";
    }
    std::string operator()(UnlockStatus::CannotOpen status) const {
        switch (status.fault) {
            case SavedDataFault::keyStoreAway:
                return "It holds the key to your face" + andPassword() + ". " +
                       std::string(words.keyStore.remedy);
            case SavedDataFault::keyMissing:
                return "The " + std::string(words.keyStore.inSentence) +
                       " doesn’t have it any more, and nothing else opens your face" +
                       andPassword() + ". Erase them, then set it up again.";
            case SavedDataFault::faceDamaged:
                return "Its file is damaged. Erase everything, then set it up again.";
            case SavedDataFault::passwordDamaged:
                return "Its file is damaged. Save the password again.";
        }
        return {};
    }
    std::string operator()(UnlockStatus::NeedsTouchID /*unused*/) const {
        return "After a restart, " + std::string(words.ownerCheck.orPassword) +
               " once lets it work at the lock screen.";
    }
    std::string operator()(UnlockStatus::ModelsChanged /*unused*/) const {
        return "It doesn’t look for you with models that didn’t save your face. If you changed "
               "them, "
               "capture your face again; if you didn’t, prepare the models anew.";
    }
    std::string operator()(UnlockStatus::NoLockerSeen /*unused*/) const {
        return "Lock your screen once. If this stays, your locker isn’t noticed: lock it with "
               "another one.";
    }
    std::string operator()(const UnlockStatus::LockerNotTypedInto& /*unused*/) const {
        return "It locked your screen last, and nothing proves which program it runs. Lock it "
               "with another locker.";
    }
    std::string operator()(UnlockStatus::Ready /*unused*/) const {
        return "Looks for you when you come back to your locked " + std::string(words.computer) +
               (opening == LockOpening::typing ? ", and types your password when it’s you."
                                               : ", and has the desktop unlock when it’s you.");
    }
    std::string operator()(UnlockStatus::NotPossible status) const {
        return std::string(reasonNotPossible(status.opening));
    }
    std::string operator()(UnlockStatus::NeedsConsent /*unused*/) const {
        return "Your face is saved. Allow unlocking without your password to finish.";
    }
    std::string operator()(UnlockStatus::SessionUnknown /*unused*/) const {
        return "The desktop is asked through logind, which doesn’t answer about this session.";
    }
};

struct Fix {
    using Answer = std::optional<UnlockStatusFix>;
    Answer operator()(UnlockStatus::NotSetUp /*unused*/) const { return UnlockStatusFix::setUp; }
    Answer operator()(UnlockStatus::PasswordNotSaved /*unused*/) const {
        return UnlockStatusFix::savePassword;
    }
    Answer operator()(UnlockStatus::PasswordNeedsUpdate /*unused*/) const {
        return UnlockStatusFix::updatePassword;
    }
    // Fixed by the switch beside it.
    Answer operator()(UnlockStatus::Off /*unused*/) const { return std::nullopt; }
    Answer operator()(UnlockStatus::Paused /*unused*/) const { return UnlockStatusFix::resume; }
    Answer operator()(UnlockStatus::CameraNotAllowed camera) const {
        return camera.wasAsked ? UnlockStatusFix::openCameraSettings : UnlockStatusFix::allowCamera;
    }
    Answer operator()(UnlockStatus::AccessibilityOff /*unused*/) const {
        return UnlockStatusFix::openAccessibilitySettings;
    }
    // Fixed by hand.
    Answer operator()(UnlockStatus::NoCamera /*unused*/) const { return std::nullopt; }
    Answer operator()(UnlockStatus::CannotOpen status) const {
        switch (status.fault) {
            case SavedDataFault::keyStoreAway:
                return UnlockStatusFix::touchID;
            case SavedDataFault::keyMissing:
            case SavedDataFault::faceDamaged:
                return UnlockStatusFix::erase;
            case SavedDataFault::passwordDamaged:
                return UnlockStatusFix::savePassword;
        }
        return std::nullopt;
    }
    Answer operator()(UnlockStatus::NeedsTouchID /*unused*/) const {
        return UnlockStatusFix::touchID;
    }
    Answer operator()(UnlockStatus::ModelsChanged /*unused*/) const {
        return UnlockStatusFix::captureAgain;
    }
    // Fixed by hand.
    Answer operator()(UnlockStatus::NoLockerSeen /*unused*/) const { return std::nullopt; }
    Answer operator()(const UnlockStatus::LockerNotTypedInto& /*unused*/) const {
        return std::nullopt;
    }
    Answer operator()(UnlockStatus::Ready /*unused*/) const { return std::nullopt; }
    // Of the desktop, the administrator or the system.
    Answer operator()(UnlockStatus::NotPossible /*unused*/) const { return std::nullopt; }
    Answer operator()(UnlockStatus::NeedsConsent /*unused*/) const {
        return UnlockStatusFix::setUp;
    }
    Answer operator()(UnlockStatus::SessionUnknown /*unused*/) const { return std::nullopt; }
};

}  // namespace

std::string_view title(UnlockStatusFix fix, const PlatformWords& words) {
    switch (fix) {
        case UnlockStatusFix::setUp:
            return "Set up…";
        case UnlockStatusFix::savePassword:
            return "Save…";
        case UnlockStatusFix::updatePassword:
            return "Update…";
        case UnlockStatusFix::allowCamera:
            return "Allow…";
        case UnlockStatusFix::openCameraSettings:
        case UnlockStatusFix::openAccessibilitySettings:
            return "Open Settings…";
        case UnlockStatusFix::touchID:
            return words.ownerCheck.button;
        case UnlockStatusFix::captureAgain:
            return "Capture Again…";
        case UnlockStatusFix::resume:
            return "Resume";
        case UnlockStatusFix::erase:
            return "Erase…";
    }
    return {};
}

UnlockStatus UnlockStatus::of(const UnlockStatusFacts& facts) {
    const bool isTyped = facts.opening == LockOpening::typing;
    if (isClosed(facts.opening)) return NotPossible{facts.opening};
    if (!facts.faceSaved) return NotSetUp{};
    if (isTyped && !facts.passwordSaved) return PasswordNotSaved{};
    if (isTyped && facts.passwordNeedsUpdate) return PasswordNeedsUpdate{};
    if (!isTyped && !facts.asksDesktop) return NeedsConsent{};
    if (!facts.isEnabled) return Off{};
    if (facts.isPaused) return Paused{};
    if (facts.camera != CameraManager::Permission::granted)
        return CameraNotAllowed{.wasAsked =
                                    facts.camera != CameraManager::Permission::notDetermined};
    if (!facts.hasCamera) return NoCamera{};
    if (!facts.accessibilityAllowed)
        return isTyped ? UnlockStatus(AccessibilityOff{}) : UnlockStatus(SessionUnknown{});
    // A password that is not typed is not missed.
    if (facts.fault && (isTyped || facts.fault != SavedDataFault::passwordDamaged))
        return CannotOpen{*facts.fault};
    if (!facts.touchIDDone) return NeedsTouchID{};
    if (facts.modelsChanged) return ModelsChanged{};
    if (isTyped && !facts.hasSeenLocker) return NoLockerSeen{};
    if (isTyped && facts.untypedLocker) return LockerNotTypedInto{*facts.untypedLocker};
    return Ready{};
}

std::string_view reasonNotPossible(LockOpening opening) {
    switch (opening) {
        case LockOpening::forbidden:
            return "This desktop can be asked to unlock, but the administrator’s "
                   "/etc/marrowby-unlock/policy.conf forbids that.";
        case LockOpening::unsupported:
            return "Here the password could only be typed blindly, and a locker that ends while "
                   "typing goes on would let the rest of it through to your windows. GNOME, KDE "
                   "and X11 sessions are supported.";
        case LockOpening::typing:
        case LockOpening::asking:
            break;
    }
    return {};
}

std::string UnlockStatus::title(const PlatformWords& words) const {
    return std::visit(Title{.words = words}, *this);
}

std::string UnlockStatus::detail(std::string_view applicationName, const PlatformWords& words,
                                 LockOpening opening) const {
    return std::visit(
        Detail{.applicationName = applicationName, .words = words, .opening = opening}, *this);
}

std::optional<UnlockStatusFix> UnlockStatus::fix() const {
    return std::visit(Fix(), *this);
}

}  // namespace marrowby
