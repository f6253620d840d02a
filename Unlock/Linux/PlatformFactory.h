// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Unlock/Model/ModelPack.h"
#include "UnlockCore/Platform/CaptureSession.h"
#include "UnlockCore/Platform/MacPasswordVerifying.h"
#include "UnlockCore/Platform/MainThread.h"
#include "UnlockCore/Platform/OwnerCheck.h"
#include "UnlockCore/Platform/SystemClock.h"

#include <expected>
#include <filesystem>
#include <memory>
#include <span>
#include <string>

namespace marrowby {

class UnlockApplication;

/// Creates the parts that a rehearsal may replace: cameras, models, password and owner check,
/// keyring, clock and journal. This class makes the real ones. Main thread; outlives the program.
class PlatformFactory {
  public:
    virtual ~PlatformFactory() = default;

    /// The pack in the first folder that has a complete one. The error is a sentence for the user.
    [[nodiscard]] virtual std::expected<ModelPack, std::string> models(
        std::span<const std::filesystem::path> folders);
    [[nodiscard]] virtual std::unique_ptr<SystemClock> makeClock();
    /// Its timers follow the clock, which outlives it.
    [[nodiscard]] virtual std::unique_ptr<MainThread> makeMainThread();
    /// Path of journald's socket.
    [[nodiscard]] virtual std::string journalSocket();
    /// Called twice: for unlocking and for enrolment.
    [[nodiscard]] virtual std::shared_ptr<CaptureSession> makeCamera(const SystemClock& clock);
    [[nodiscard]] virtual std::shared_ptr<MacPasswordVerifying> makePasswordVerifier(
        const std::string& userName);
    [[nodiscard]] virtual std::unique_ptr<OwnerCheck> makeOwnerCheck(MainThread& mainThread);
    /// Address of the bus with the Secret Service; empty if there is none.
    [[nodiscard]] virtual std::string keyringBus();
    virtual void didLaunch(UnlockApplication& /*application*/) {}
};

}  // namespace marrowby
