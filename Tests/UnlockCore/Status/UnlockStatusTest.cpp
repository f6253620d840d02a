// SPDX-License-Identifier: Apache-2.0
#include "Unlock/macOS/MacWords.h"
#include "UnlockCore/Status/UnlockStatus.h"

#include <optional>
#include <string>

#include <gtest/gtest.h>

namespace marrowby {
namespace {

using Fix = UnlockStatusFix;

const UnlockStatusFacts good{.faceSaved = true,
                             .passwordSaved = true,
                             .passwordNeedsUpdate = false,
                             .isEnabled = true,
                             .camera = CameraManager::Permission::granted,
                             .accessibilityAllowed = true,
                             .touchIDDone = true};

/// Everything that comes after a fact in priority is bad as well.
TEST(UnlockStatus, namesTheFirstUnmetCondition) {
    UnlockStatusFacts facts{.passwordNeedsUpdate = true,
                            .camera = CameraManager::Permission::denied,
                            .modelsChanged = true,
                            .isPaused = true,
                            .fault = SavedDataFault::keyMissing,
                            .hasCamera = false,
                            .hasSeenLocker = false,
                            .untypedLocker = "slock"};
    const struct {
        UnlockStatus status;
        std::optional<Fix> fix;
        void (*mend)(UnlockStatusFacts&);
    } cases[] = {
        {UnlockStatus::NotSetUp{}, Fix::setUp, [](auto& f) { f.faceSaved = true; }},
        {UnlockStatus::PasswordNotSaved{}, Fix::savePassword,
         [](auto& f) { f.passwordSaved = true; }},
        {UnlockStatus::PasswordNeedsUpdate{}, Fix::updatePassword,
         [](auto& f) { f.passwordNeedsUpdate = false; }},
        {UnlockStatus::Off{}, {}, [](auto& f) { f.isEnabled = true; }},
        {UnlockStatus::Paused{}, Fix::resume, [](auto& f) { f.isPaused = false; }},
        {UnlockStatus::CameraNotAllowed{true}, Fix::openCameraSettings,
         [](auto& f) { f.camera = CameraManager::Permission::restricted; }},
        {UnlockStatus::CameraNotAllowed{true}, Fix::openCameraSettings,
         [](auto& f) { f.camera = CameraManager::Permission::notDetermined; }},
        {UnlockStatus::CameraNotAllowed{false}, Fix::allowCamera,
         [](auto& f) { f.camera = CameraManager::Permission::granted; }},
        {UnlockStatus::NoCamera{}, {}, [](auto& f) { f.hasCamera = true; }},
        {UnlockStatus::AccessibilityOff{}, Fix::openAccessibilitySettings,
         [](auto& f) { f.accessibilityAllowed = true; }},
        {UnlockStatus::CannotOpen{SavedDataFault::keyMissing}, Fix::erase,
         [](auto& f) { f.fault.reset(); }},
        {UnlockStatus::NeedsTouchID{}, Fix::touchID, [](auto& f) { f.touchIDDone = true; }},
        {UnlockStatus::ModelsChanged{}, Fix::captureAgain,
         [](auto& f) { f.modelsChanged = false; }},
        {UnlockStatus::NoLockerSeen{}, {}, [](auto& f) { f.hasSeenLocker = true; }},
        {UnlockStatus::LockerNotTypedInto{"slock"}, {}, [](auto& f) { f.untypedLocker.reset(); }},
        {UnlockStatus::Ready{}, {}, [](auto&) {}},
    };
    for (const auto& [status, fix, mend] : cases) {
        EXPECT_EQ(UnlockStatus::of(facts), status) << status.title(macWords);
        EXPECT_EQ(UnlockStatus::of(facts).fix(), fix) << status.title(macWords);
        EXPECT_EQ(status.isReady(), facts == good);
        mend(facts);
    }
}

TEST(UnlockStatus, asksForNoPasswordWhereNoneIsTyped) {
    UnlockStatusFacts facts{.passwordNeedsUpdate = true,
                            .isEnabled = true,
                            .camera = CameraManager::Permission::granted,
                            .touchIDDone = true,
                            .fault = SavedDataFault::passwordDamaged,
                            .opening = LockOpening::unsupported};
    const struct {
        UnlockStatus status;
        const char* inDetail;
        void (*mend)(UnlockStatusFacts&);
    } cases[] = {
        {UnlockStatus::NotPossible{LockOpening::unsupported}, "GNOME, KDE and X11",
         [](auto& f) { f.opening = LockOpening::forbidden; }},
        {UnlockStatus::NotPossible{LockOpening::forbidden}, "policy.conf",
         [](auto& f) { f.opening = LockOpening::asking; }},
        {UnlockStatus::NotSetUp{}, "Save your face, and", [](auto& f) { f.faceSaved = true; }},
        {UnlockStatus::NeedsConsent{}, "Allow", [](auto& f) { f.asksDesktop = true; }},
        {UnlockStatus::SessionUnknown{}, "logind", [](auto& f) { f.accessibilityAllowed = true; }},
        {UnlockStatus::Ready{}, "has the desktop unlock", [](auto&) {}},
    };
    for (const auto& [status, inDetail, mend] : cases) {
        EXPECT_EQ(UnlockStatus::of(facts), status) << status.title(macWords);
        const std::string detail = status.detail(macWords, facts.opening);
        EXPECT_NE(detail.find(inDetail), std::string::npos) << detail;
        EXPECT_EQ(detail.find("Mac password"), std::string::npos) << detail;
        mend(facts);
    }
}

}  // namespace
}  // namespace marrowby
