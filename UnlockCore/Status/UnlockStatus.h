// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Foundation/Phrase.h"
#include "UnlockCore/Platform/PlatformWords.h"
#include "UnlockCore/Platform/SessionUnlocking.h"
#include "UnlockCore/Recognition/CameraManager.h"

#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace marrowby {

/// Why something that is saved could not be opened when it was tried last.
enum class SavedDataFault {
    keyStoreAway,
    keyMissing,
    faceDamaged,
    passwordDamaged,
};

/// What the status of face unlock depends on.
struct UnlockStatusFacts {
    /// At least one face is enrolled.
    bool faceSaved = false;
    bool passwordSaved = false;
    /// The saved password was turned down, and typing it has stopped.
    bool passwordNeedsUpdate = false;
    bool isEnabled = false;
    CameraManager::Permission camera = CameraManager::Permission::notDetermined;
    /// Or, where the desktop is asked, the session is known.
    bool accessibilityAllowed = false;
    /// The owner check was passed in this session.
    bool touchIDDone = false;
    /// Faces are enrolled, but none by the installed models.
    bool modelsChanged = false;
    /// The user stopped it for a while.
    bool isPaused = false;
    std::optional<SavedDataFault> fault{};
    /// Known once the camera is allowed.
    bool hasCamera = true;
    /// A screen locker has locked the screen before, or has announced itself.
    bool hasSeenLocker = true;
    /// The last locker, if no password is typed into it.
    std::optional<std::string> untypedLocker{};
    LockOpening opening = LockOpening::typing;
    /// The user allowed having the desktop open the lock.
    bool asksDesktop = false;
    friend bool operator==(const UnlockStatusFacts&, const UnlockStatusFacts&) = default;
};

/// What one button beside the status does.
enum class UnlockStatusFix {
    setUp,
    savePassword,
    updatePassword,
    allowCamera,
    openCameraSettings,
    openAccessibilitySettings,
    touchID,
    captureAgain,
    resume,
    erase,
};

/// Of its button.
[[nodiscard]] std::string title(UnlockStatusFix fix, const PlatformWords& words);

namespace unlockstatus {

/// Nothing can open this session's lock.
struct NotPossible {
    LockOpening opening = LockOpening::unsupported;
    friend bool operator==(const NotPossible&, const NotPossible&) = default;
};
/// The user has not allowed having the desktop open the lock.
struct NeedsConsent {
    friend bool operator==(const NeedsConsent&, const NeedsConsent&) = default;
};
/// The session is unknown, so that the desktop cannot be asked for it.
struct SessionUnknown {
    friend bool operator==(const SessionUnknown&, const SessionUnknown&) = default;
};

struct NotSetUp {
    friend bool operator==(const NotSetUp&, const NotSetUp&) = default;
};
struct PasswordNotSaved {
    friend bool operator==(const PasswordNotSaved&, const PasswordNotSaved&) = default;
};
struct PasswordNeedsUpdate {
    friend bool operator==(const PasswordNeedsUpdate&, const PasswordNeedsUpdate&) = default;
};
struct Off {
    friend bool operator==(const Off&, const Off&) = default;
};
struct Paused {
    friend bool operator==(const Paused&, const Paused&) = default;
};
struct CameraNotAllowed {
    bool wasAsked = false;
    friend bool operator==(const CameraNotAllowed&, const CameraNotAllowed&) = default;
};
struct AccessibilityOff {
    friend bool operator==(const AccessibilityOff&, const AccessibilityOff&) = default;
};
struct NoCamera {
    friend bool operator==(const NoCamera&, const NoCamera&) = default;
};
struct CannotOpen {
    SavedDataFault fault = SavedDataFault::keyStoreAway;
    friend bool operator==(const CannotOpen&, const CannotOpen&) = default;
};
struct NeedsTouchID {
    friend bool operator==(const NeedsTouchID&, const NeedsTouchID&) = default;
};
struct ModelsChanged {
    friend bool operator==(const ModelsChanged&, const ModelsChanged&) = default;
};
struct NoLockerSeen {
    friend bool operator==(const NoLockerSeen&, const NoLockerSeen&) = default;
};
struct LockerNotTypedInto {
    std::string name;
    friend bool operator==(const LockerNotTypedInto&, const LockerNotTypedInto&) = default;
};
struct Ready {
    friend bool operator==(const Ready&, const Ready&) = default;
};

}  // namespace unlockstatus

/// What having the desktop open the lock leaves out.
inline constexpr auto askingExplanation = Phrase(
    "Your desktop opens the lock when it is asked to, without your password: neither the "
    "password’s expiry nor a second factor is checked. A keyring that was locked stays locked.");

/// Said in the log, too.
inline constexpr auto modelsChangedTitle = Phrase("The models changed since your face was saved");

/// Why a lock that nothing can open stays as it is, as a sentence.
[[nodiscard]] Phrase reasonNotPossible(LockOpening opening);

/// The state of face unlock in one line: the first condition that is not met.
struct UnlockStatus
    : std::variant<
          unlockstatus::NotSetUp, unlockstatus::PasswordNotSaved, unlockstatus::PasswordNeedsUpdate,
          unlockstatus::Off, unlockstatus::Paused, unlockstatus::CameraNotAllowed,
          unlockstatus::NoCamera, unlockstatus::AccessibilityOff, unlockstatus::CannotOpen,
          unlockstatus::NeedsTouchID, unlockstatus::ModelsChanged, unlockstatus::NoLockerSeen,
          unlockstatus::LockerNotTypedInto, unlockstatus::Ready, unlockstatus::NotPossible,
          unlockstatus::NeedsConsent, unlockstatus::SessionUnknown> {
    using NotSetUp = unlockstatus::NotSetUp;
    using PasswordNotSaved = unlockstatus::PasswordNotSaved;
    using PasswordNeedsUpdate = unlockstatus::PasswordNeedsUpdate;
    using Off = unlockstatus::Off;
    using Paused = unlockstatus::Paused;
    using CameraNotAllowed = unlockstatus::CameraNotAllowed;
    using AccessibilityOff = unlockstatus::AccessibilityOff;
    using NoCamera = unlockstatus::NoCamera;
    using CannotOpen = unlockstatus::CannotOpen;
    using NeedsTouchID = unlockstatus::NeedsTouchID;
    using ModelsChanged = unlockstatus::ModelsChanged;
    using NoLockerSeen = unlockstatus::NoLockerSeen;
    using LockerNotTypedInto = unlockstatus::LockerNotTypedInto;
    using Ready = unlockstatus::Ready;
    using NotPossible = unlockstatus::NotPossible;
    using NeedsConsent = unlockstatus::NeedsConsent;
    using SessionUnknown = unlockstatus::SessionUnknown;
    using variant::variant;

    [[nodiscard]] static UnlockStatus of(const UnlockStatusFacts& facts);

    [[nodiscard]] bool isReady() const { return std::holds_alternative<Ready>(*this); }
    [[nodiscard]] std::string title(const PlatformWords& words) const;
    [[nodiscard]] std::string detail(const PlatformWords& words,
                                     LockOpening opening = LockOpening::typing) const;
    [[nodiscard]] std::optional<UnlockStatusFix> fix() const;
};

}  // namespace marrowby
