// SPDX-License-Identifier: Apache-2.0
#include "Unlock/macOS/MacWords.h"
#include "UnlockCore/Liveness/LivenessMode.h"
#include "UnlockCore/PasswordEntry/KeystrokeInjector.h"
#include "UnlockCore/Recognition/CameraManager.h"
#include "UnlockCore/Status/UnlockStatus.h"
#include "UnlockCore/Storage/StorageError.h"

#include <string>
#include <utility>

#include <gtest/gtest.h>

namespace marrowby {
namespace {

std::string titleOf(const UnlockStatus& status) {
    return status.title(macWords);
}
std::string detailOf(const UnlockStatus& status) {
    return status.detail(macWords);
}

/// The sentences that are put together of the platform's words, letter by letter.
TEST(MacTexts, readAsOnAMac) {
    using Status = UnlockStatus;
    const std::pair<std::string, std::string> texts[] = {
        {detailOf(Status::NotSetUp{}), "Save your face and your Mac password, and it’s ready."},
        {titleOf(Status::PasswordNotSaved{}), "Mac password not saved"},
        {detailOf(Status::PasswordNotSaved{}),
         "Your face is saved. Save your Mac password to finish."},
        {titleOf(Status::PasswordNeedsUpdate{}), "Update your Mac password"},
        {detailOf(Status::CameraNotAllowed{true}),
         "Turned off in System Settings › Privacy & Security › Camera."},
        {detailOf(Status::CameraNotAllowed{false}),
         "macOS asks once. Allow it, so it can look for you at the lock screen."},
        {titleOf(Status::AccessibilityOff{}), "Accessibility is off"},
        {detailOf(Status::AccessibilityOff{}),
         "Needed to type your password at the lock screen: switch Marrowby Unlock on in System "
         "Settings › Privacy & Security › Accessibility."},
        {titleOf(Status::NeedsTouchID{}), "Needs Touch ID once this session"},
        {detailOf(Status::NeedsTouchID{}),
         "After a restart, Touch ID (or your password) once lets it work at the lock screen."},
        {detailOf(Status::Ready{}),
         "Looks for you when you come back to your locked Mac, and types your password when it’s "
         "you."},
        {title(UnlockStatusFix::touchID, macWords), "Use Touch ID…"},
        {settingsNote(LivenessMode::strict, macWords),
         "Also asks for a small turn of the head, in the notch."},
        {description(KeystrokeError::noAccessibility, macWords),
         "Marrowby Unlock needs Accessibility to type your password at the lock screen."},
        {description(KeystrokeError::notLocked, macWords),
         "The Mac isn’t locked any more, so nothing was typed."},
        {description(CameraError(CameraError::NotAllowed{}), macWords),
         "Marrowby Unlock isn’t allowed to use the camera. Turn it on in System Settings › Privacy "
         "& Security › Camera."},
        {description(StorageError(VaultError::locked), macWords),
         "Marrowby Unlock needs your Touch ID or password first."},
        {description(KeychainError(KeychainError::Status{-25291, {}}), macWords),
         "Keychain: error -25291"},
        {description(KeychainError(KeychainError::UnexpectedData{}), macWords),
         "The keychain item isn’t in the expected format."},
        {description(OwnerCheckError(OwnerCheckError::Unavailable{}), macWords),
         "macOS can’t check it’s you right now. "},
    };
    for (const auto& [text, expected] : texts)
        EXPECT_EQ(text, expected);
}

}  // namespace
}  // namespace marrowby
