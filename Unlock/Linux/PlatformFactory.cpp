// SPDX-License-Identifier: Apache-2.0
#include "Unlock/Linux/PlatformFactory.h"

#include "Platforms/Linux/Camera/V4l2CaptureSession.h"
#include "Platforms/Linux/Camera/V4l2SystemCalls.h"
#include "Platforms/Linux/Desktop/BusAddress.h"
#include "Platforms/Linux/Desktop/JournaldLog.h"
#include "Platforms/Linux/Desktop/QtMainThread.h"
#include "Platforms/Linux/Desktop/UnixClock.h"
#include "Platforms/Linux/Secrets/PamPasswordVerifier.h"
#include "Platforms/Linux/Secrets/PolkitOwnerCheck.h"
#include "Platforms/Linux/Vision/OnnxModelFiles.h"
#include "UnlockCore/Foundation/Phrase.h"

#include <optional>

namespace marrowby {

std::expected<ModelPack, std::string> PlatformFactory::models(
    std::span<const std::filesystem::path> folders) {
    const OnnxModelFiles files;
    // The problem of a bad pack is more useful than "no pack".
    std::optional<std::string> problem;
    for (const auto& folder : folders) {
        auto pack = ModelPack::read(folder, files);
        if (pack && pack->knowsRealFaces()) return *std::move(pack);
        if (pack) {
            problem = description({.reason = translated("the rehearsal’s knows no real faces")});
            continue;
        }
        std::error_code error;
        if (!problem || std::filesystem::exists(folder / ModelPack::manifestFile, error))
            problem = description(pack.error());
    }
    return std::unexpected(
        problem.value_or(translated("There is no folder to look for models in.")));
}

std::unique_ptr<SystemClock> PlatformFactory::makeClock() {
    return std::make_unique<UnixSystemClock>();
}

std::unique_ptr<MainThread> PlatformFactory::makeMainThread() {
    return std::make_unique<QtMainThread>();
}

std::string PlatformFactory::journalSocket() {
    return JournaldLog::systemSocket;
}

std::shared_ptr<CaptureSession> PlatformFactory::makeCamera(const SystemClock& /*clock*/) {
    return std::make_shared<V4l2CaptureSession>(std::make_shared<V4l2SystemCalls>());
}

std::shared_ptr<MacPasswordVerifying> PlatformFactory::makePasswordVerifier(
    const std::string& userName) {
    return std::make_shared<PamPasswordVerifier>(userName);
}

std::unique_ptr<OwnerCheck> PlatformFactory::makeOwnerCheck(MainThread& /*mainThread*/) {
    return std::make_unique<PolkitOwnerCheck>(busaddress::system());
}

std::string PlatformFactory::keyringBus() {
    return busaddress::session();
}

}  // namespace marrowby
