// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Kit/CameraUseRegistry.h"
#include "Kit/LockScreen.h"
#include "Unlock/Island/LockScreenOverlayController.h"
#include "Unlock/Model/ModelPack.h"
#include "Unlock/Model/UnlockPlatform.h"
#include "UnlockCore/Engine/SystemUnlockClock.h"
#include "UnlockCore/Engine/UnlockCoordinator.h"
#include "UnlockCore/LockScreenServices/CameraFaceScanner.h"
#include "UnlockCore/LockScreenServices/SessionUnlockAsker.h"
#include "UnlockCore/LockScreenServices/StoredPasswordTyper.h"
#include "UnlockCore/LockWatching/LockScreenActivityMonitor.h"
#include "UnlockCore/LockWatching/OwnKeystrokes.h"
#include "UnlockCore/LockWatching/SpaceKeyMonitor.h"
#include "UnlockCore/Storage/CredentialStore.h"

#include <functional>
#include <memory>

namespace marrowby {

/// The engine and the collaborators that only it uses. Main thread; the services outlive it.
class EngineHost {
  public:
    struct Services {
        const UnlockPlatform& platform;
        const ModelPack& models;
        const CredentialStore& credentials;
        CameraUseRegistry& cameraUse;
        std::function<UnlockReadiness()> readiness;
    };

    EngineHost(const Services& services, PasswordHealth health,
               UnlockCoordinator::Callbacks callbacks);

    void follow(LockEvent event);
    /// Call after a change of what `readiness` returns.
    void readinessChanged() { coordinator_.send(UnlockCoordinator::Event::SettingsChanged{}); }
    /// After the password was saved anew or erased.
    void trustPassword() { coordinator_.replacePasswordHealth({}); }
    void stopTyping() {
        typer_.stop();
        if (asker_) asker_->stop();
    }
    /// For looks of the application's own while the screen is unlocked.
    [[nodiscard]] FaceScanning& scanner() { return scanner_; }

  private:
    /// Types or asks, as the session needs it at that moment.
    struct Opener final : PasswordTyping {
        explicit Opener(EngineHost& host) : host_(host) {}
        void expectTyping(std::function<bool()> stillLocked) override;
        void typeStoredPassword(std::function<bool()> stillLocked,
                                std::function<void(TypingOutcome)> completion) override;

      private:
        [[nodiscard]] PasswordTyping& way() const;

        EngineHost& host_;
    };

    const UnlockPlatform& platform_;
    OwnKeystrokes ownKeystrokes_;
    TrackedKeyEvents keyEvents_;
    ForeignInputIdle inputIdle_;
    CameraFaceScanner scanner_;
    StoredPasswordTyper typer_;
    /// None where the platform types only.
    std::unique_ptr<SessionUnlockAsker> asker_;
    Opener opener_{*this};
    SpaceKeyMonitor spaceKeys_;
    LockScreenActivityMonitor activity_;
    SystemUnlockClock clock_;
    LockScreen lockScreen_;
    LockScreenOverlayController island_;
    UnlockCoordinator coordinator_;
    /// Held from lock to unlock.
    std::unique_ptr<ProcessActivities::Activity> lockedActivity_;
};

}  // namespace marrowby
