// SPDX-License-Identifier: Apache-2.0
#include "UnlockCore/Status/UnlockStatus.h"

#include "UnlockCore/Foundation/Phrase.h"

namespace marrowby {

namespace {

struct Title {
    const PlatformWords& words;

    std::string operator()(UnlockStatus::NotSetUp /*unused*/) const {
        return translated("Not set up yet");
    }
    std::string operator()(UnlockStatus::PasswordNotSaved /*unused*/) const {
        return translated("{password} not saved", {{"password", words.password.atStart}});
    }
    std::string operator()(UnlockStatus::PasswordNeedsUpdate /*unused*/) const {
        return translated("Update your {password}", {{"password", words.password.inSentence}});
    }
    std::string operator()(UnlockStatus::Off /*unused*/) const { return translated("Off"); }
    std::string operator()(UnlockStatus::Paused /*unused*/) const { return translated("Paused"); }
    std::string operator()(UnlockStatus::CameraNotAllowed camera) const {
        return camera.wasAsked ? translated("Camera not allowed")
                               : translated("Camera not allowed yet");
    }
    std::string operator()(UnlockStatus::AccessibilityOff /*unused*/) const {
        return translated(words.typing.notAllowed);
    }
    std::string operator()(UnlockStatus::NoCamera /*unused*/) const {
        return translated("No camera found");
    }
    std::string operator()(UnlockStatus::CannotOpen status) const {
        switch (status.fault) {
            case SavedDataFault::keyStoreAway:
                return translated("{keyStore} can’t be used",
                                  {{"keyStore", words.keyStore.atStart}});
            case SavedDataFault::keyMissing:
                return translated("The key to what was saved is gone");
            case SavedDataFault::faceDamaged:
                return translated("The saved face can’t be read");
            case SavedDataFault::passwordDamaged:
                return translated("The saved {password} can’t be read",
                                  {{"password", words.password.inSentence}});
        }
        return {};
    }
    std::string operator()(UnlockStatus::NeedsTouchID /*unused*/) const {
        return translated("Needs {check} once this session", {{"check", words.ownerCheck.name}});
    }
    std::string operator()(UnlockStatus::ModelsChanged /*unused*/) const {
        return translated(modelsChangedTitle);
    }
    std::string operator()(UnlockStatus::NoLockerSeen /*unused*/) const {
        return translated("No screen locker has been seen yet");
    }
    std::string operator()(const UnlockStatus::LockerNotTypedInto& locker) const {
        return translated("Nothing is typed into “{locker}”", {{"locker", locker.name}});
    }
    std::string operator()(UnlockStatus::Ready /*unused*/) const { return translated("Ready"); }
    std::string operator()(UnlockStatus::NotPossible status) const {
        return status.opening == LockOpening::forbidden
                   ? translated("Not allowed on this {computer}", {{"computer", words.computer}})
                   : translated("Not supported on this desktop yet");
    }
    std::string operator()(UnlockStatus::NeedsConsent /*unused*/) const {
        return translated("Needs your yes");
    }
    std::string operator()(UnlockStatus::SessionUnknown /*unused*/) const {
        return translated("This session isn’t known");
    }
};

struct Detail {
    const PlatformWords& words;
    LockOpening opening;

    [[nodiscard]] bool isTyped() const { return opening == LockOpening::typing; }
    [[nodiscard]] Filling password() const { return {"password", words.password.inSentence}; }

    std::string operator()(UnlockStatus::NotSetUp /*unused*/) const {
        return isTyped()
                   ? translated("Save your face and your {password}, and it’s ready.", {password()})
                   : translated("Save your face, and it’s ready.");
    }
    std::string operator()(UnlockStatus::PasswordNotSaved /*unused*/) const {
        return translated("Your face is saved. Save your {password} to finish.", {password()});
    }
    std::string operator()(UnlockStatus::PasswordNeedsUpdate /*unused*/) const {
        return translated(
            "The lock screen turned the saved one down twice, so typing it has stopped.");
    }
    std::string operator()(UnlockStatus::Off /*unused*/) const {
        return translated("The lock screen stays as it is. Turn it on above.");
    }
    std::string operator()(UnlockStatus::Paused /*unused*/) const {
        return translated("The lock screen stays as it is until the pause is over.");
    }
    std::string operator()(UnlockStatus::CameraNotAllowed camera) const {
        return camera.wasAsked ? words.camera.advice(Phrase("Turned off in {place}."))
                               : translated(
                                     "{system} asks once. Allow it, so it can look for you at the "
                                     "lock screen.",
                                     {{"system", words.system}});
    }
    std::string operator()(UnlockStatus::AccessibilityOff /*unused*/) const {
        return words.accessibility.advice(
            Phrase("Needed to type your password at the lock screen: switch Marrowby Unlock on in "
                   "{place}."));
    }
    std::string operator()(UnlockStatus::NoCamera /*unused*/) const {
        return translated(
            "It can’t look for you. Connect a camera, or switch on the one that is built in.");
    }
    std::string operator()(UnlockStatus::CannotOpen status) const {
        switch (status.fault) {
            case SavedDataFault::keyStoreAway:
                return isTyped()
                           ? translated(
                                 "It holds the key to your face and your {password}. {remedy}",
                                 {password(), {"remedy", words.keyStore.remedy}})
                           : translated("It holds the key to your face. {remedy}",
                                        {{"remedy", words.keyStore.remedy}});
            case SavedDataFault::keyMissing:
                return isTyped()
                           ? translated(
                                 "The {keyStore} doesn’t have it any more, and nothing else opens "
                                 "your face and your {password}. Erase them, then set it up again.",
                                 {{"keyStore", words.keyStore.inSentence}, password()})
                           : translated(
                                 "The {keyStore} doesn’t have it any more, and nothing else opens "
                                 "your face. Erase them, then set it up again.",
                                 {{"keyStore", words.keyStore.inSentence}});
            case SavedDataFault::faceDamaged:
                return translated("Its file is damaged. Erase everything, then set it up again.");
            case SavedDataFault::passwordDamaged:
                return translated("Its file is damaged. Save the password again.");
        }
        return {};
    }
    std::string operator()(UnlockStatus::NeedsTouchID /*unused*/) const {
        return translated("After a restart, {check} once lets it work at the lock screen.",
                          {{"check", words.ownerCheck.orPassword}});
    }
    std::string operator()(UnlockStatus::ModelsChanged /*unused*/) const {
        return translated(
            "It doesn’t look for you with models that didn’t save your face. If you changed "
            "them, "
            "capture your face again; if you didn’t, prepare the models anew.");
    }
    std::string operator()(UnlockStatus::NoLockerSeen /*unused*/) const {
        return translated(
            "Lock your screen once. If this stays, your locker isn’t noticed: lock it with "
            "another one.");
    }
    std::string operator()(const UnlockStatus::LockerNotTypedInto& /*unused*/) const {
        return translated(
            "It locked your screen last, and nothing proves which program it runs. Lock it "
            "with another locker.");
    }
    std::string operator()(UnlockStatus::Ready /*unused*/) const {
        const Filling computer("computer", words.computer);
        return isTyped() ? translated(
                               "Looks for you when you come back to your locked {computer}, and "
                               "types your password when it’s you.",
                               {computer})
                         : translated(
                               "Looks for you when you come back to your locked {computer}, and "
                               "has the desktop unlock when it’s you.",
                               {computer});
    }
    std::string operator()(UnlockStatus::NotPossible status) const {
        return translated(reasonNotPossible(status.opening));
    }
    std::string operator()(UnlockStatus::NeedsConsent /*unused*/) const {
        return translated("Your face is saved. Allow unlocking without your password to finish.");
    }
    std::string operator()(UnlockStatus::SessionUnknown /*unused*/) const {
        return translated(
            "The desktop is asked through logind, which doesn’t answer about this session.");
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

std::string title(UnlockStatusFix fix, const PlatformWords& words) {
    switch (fix) {
        case UnlockStatusFix::setUp:
            return translated("Set up…");
        case UnlockStatusFix::savePassword:
            return translated("Save…");
        case UnlockStatusFix::updatePassword:
            return translated("Update…");
        case UnlockStatusFix::allowCamera:
            return translated("Allow…");
        case UnlockStatusFix::openCameraSettings:
        case UnlockStatusFix::openAccessibilitySettings:
            return translated("Open Settings…");
        case UnlockStatusFix::touchID:
            return translated(words.ownerCheck.button);
        case UnlockStatusFix::captureAgain:
            return translated("Capture Again…");
        case UnlockStatusFix::resume:
            return translated("Resume");
        case UnlockStatusFix::erase:
            return translated("Erase…");
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

Phrase reasonNotPossible(LockOpening opening) {
    switch (opening) {
        case LockOpening::forbidden:
            return Phrase(
                "This desktop can be asked to unlock, but the administrator’s "
                "/etc/marrowby-unlock/policy.conf forbids that.");
        case LockOpening::unsupported:
            return Phrase(
                "Here the password could only be typed blindly, and a locker that ends while "
                "typing goes on would let the rest of it through to your windows. GNOME, KDE "
                "and X11 sessions are supported.");
        case LockOpening::typing:
        case LockOpening::asking:
            break;
    }
    return {};
}

std::string UnlockStatus::title(const PlatformWords& words) const {
    return std::visit(Title{.words = words}, *this);
}

std::string UnlockStatus::detail(const PlatformWords& words, LockOpening opening) const {
    return std::visit(Detail{.words = words, .opening = opening}, *this);
}

std::optional<UnlockStatusFix> UnlockStatus::fix() const {
    return std::visit(Fix(), *this);
}

}  // namespace marrowby
