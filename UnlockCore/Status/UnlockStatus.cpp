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
};

struct Detail {
    std::string_view applicationName;
    const PlatformWords& words;

    std::string operator()(UnlockStatus::NotSetUp /*unused*/) const {
        return "Save your face and your " + std::string(words.password.inSentence) +
               ", and it’s ready.";
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
                return "It holds the key to your face and your " +
                       std::string(words.password.inSentence) + ". " +
                       std::string(words.keyStore.remedy);
            case SavedDataFault::keyMissing:
                return "The " + std::string(words.keyStore.inSentence) +
                       " doesn’t have it any more, and nothing else opens your face and your " +
                       std::string(words.password.inSentence) +
                       ". Erase them, then set it up again.";
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
               ", and types your password when it’s you.";
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
    if (!facts.faceSaved) return NotSetUp{};
    if (!facts.passwordSaved) return PasswordNotSaved{};
    if (facts.passwordNeedsUpdate) return PasswordNeedsUpdate{};
    if (!facts.isEnabled) return Off{};
    if (facts.isPaused) return Paused{};
    if (facts.camera != CameraManager::Permission::granted)
        return CameraNotAllowed{.wasAsked =
                                    facts.camera != CameraManager::Permission::notDetermined};
    if (!facts.hasCamera) return NoCamera{};
    if (!facts.accessibilityAllowed) return AccessibilityOff{};
    if (facts.fault) return CannotOpen{*facts.fault};
    if (!facts.touchIDDone) return NeedsTouchID{};
    if (facts.modelsChanged) return ModelsChanged{};
    if (!facts.hasSeenLocker) return NoLockerSeen{};
    if (facts.untypedLocker) return LockerNotTypedInto{*facts.untypedLocker};
    return Ready{};
}

std::string UnlockStatus::title(const PlatformWords& words) const {
    return std::visit(Title{.words = words}, *this);
}

std::string UnlockStatus::detail(std::string_view applicationName,
                                 const PlatformWords& words) const {
    return std::visit(Detail{.applicationName = applicationName, .words = words}, *this);
}

std::optional<UnlockStatusFix> UnlockStatus::fix() const {
    return std::visit(Fix(), *this);
}

}  // namespace marrowby
