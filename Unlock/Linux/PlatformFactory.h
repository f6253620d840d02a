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

/// What a rehearsal may put in the place of this machine’s own, and nothing else: cameras, models,
/// who vouches for the user, the clock and the journal. The shipped program uses it as it is. Main
/// thread; outlives the program.
class PlatformFactory {
  public:
    virtual ~PlatformFactory() = default;

    /// The first folder with a whole pack. The error is a sentence for the user.
    [[nodiscard]] virtual std::expected<ModelPack, std::string> models(
        std::span<const std::filesystem::path> folders);
    [[nodiscard]] virtual std::unique_ptr<SystemClock> makeClock();
    /// Its timers follow the clock, which outlives it.
    [[nodiscard]] virtual std::unique_ptr<MainThread> makeMainThread();
    /// Of journald.
    [[nodiscard]] virtual std::string journalSocket();
    /// Called twice: for the looks and for enrolment.
    [[nodiscard]] virtual std::shared_ptr<CaptureSession> makeCamera(const SystemClock& clock);
    [[nodiscard]] virtual std::shared_ptr<MacPasswordVerifying> makePasswordVerifier(
        const std::string& userName);
    [[nodiscard]] virtual std::unique_ptr<OwnerCheck> makeOwnerCheck(MainThread& mainThread);
    /// The bus of the keyring’s service; empty where there is none.
    [[nodiscard]] virtual std::string keyringBus();
    /// The application has finished launching.
    virtual void didLaunch(UnlockApplication& /*application*/) {}
};

}  // namespace marrowby
