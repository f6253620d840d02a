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

/// What the program finds around it: its cameras, its networks, and who may vouch for its user.
/// These are this machine’s own; a stage puts others in their place, and nothing else. Main thread;
/// outlives the program.
class PlatformFactory {
  public:
    virtual ~PlatformFactory() = default;

    /// The first folder with a whole pack. The error is a sentence for the user.
    [[nodiscard]] virtual std::expected<ModelPack, std::string> models(
        std::span<const std::filesystem::path> folders);
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
