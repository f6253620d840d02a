// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Engine/PasswordTyping.h"
#include "UnlockCore/Engine/SystemUnlockClock.h"
#include "UnlockCore/Engine/UnlockCoordinator.h"
#include "UnlockCore/Foundation/WeakSelf.h"
#include "UnlockCore/LockWatching/LockScreenActivityMonitor.h"
#include "UnlockCore/LockWatching/SpaceKeyMonitor.h"
#include "UnlockCore/Platform/MainThread.h"
#include "UnlockCore/Platform/ScreenLock.h"
#include "UnlockCore/Platform/SystemClock.h"
#include "UnlockCore/Platform/WindowServer.h"

#include <functional>
#include <string>
#include <vector>

namespace marrowby {

/// One look while the screen is unlocked: the engine's rules as at the lock screen, with a typer
/// that types nothing. Main thread; destroying it ends the look without a result.
class TrialLook final : private UnlockCoordinator::Presenting, private PasswordTyping {
  public:
    struct Result {
        bool wouldUnlock = false;
        /// What the engine logged of it, without names.
        std::vector<std::string> lines{};
    };

    /// The scanner and the services outlive this.
    struct Services {
        FaceScanning& scanner;
        MainThread& mainThread;
        const SystemClock& clock;
        WindowServer& windowServer;
    };

    /// `onEnd` is called once, on a later turn, and may destroy this.
    TrialLook(const Services& services, UnlockReadiness readiness,
              std::function<void(const Result&)> onEnd);
    TrialLook(const TrialLook&) = delete;
    TrialLook& operator=(const TrialLook&) = delete;
    ~TrialLook() override;

    void start();

  private:
    struct Locked final : LockStateReading {
        [[nodiscard]] LockState state() const override { return {true, true}; }
    };
    /// The only reason to look is this look.
    struct Deaf final : SpaceKeyListening, ActivityWatching {
        void start() override {}
        void stop() override {}
    };

    void show(const OverlayPhase& phase) override;
    void typeStoredPassword(std::function<bool()> stillLocked,
                            std::function<void(TypingOutcome)> completion) override;
    void note(const LogLine& line);
    void end(bool wouldUnlock);

    const Services services_;
    const std::function<void(const Result&)> onEnd_;
    Locked locked_;
    Deaf deaf_;
    SystemUnlockClock clock_;
    std::vector<std::string> lines_;
    /// Of a camera that failed.
    std::string message_;
    bool isLooking_ = false;
    bool hasLooked_ = false;
    bool hasEnded_ = false;
    UnlockCoordinator coordinator_;
    WeakSelf<TrialLook> weakSelf_{this};
};

}  // namespace marrowby
