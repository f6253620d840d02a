// SPDX-License-Identifier: Apache-2.0
#include "Unlock/macOS/MacApplication.h"

#include "Platforms/macOS/FoundationText.h"
#include "Unlock/Model/SharedNamespace.h"
#include "Unlock/macOS/MacWords.h"
#include "UnlockCore/Liveness/MiniFASNet.h"
#include "UnlockCore/Recognition/SFaceEmbedder.h"

#include <string>
#include <utility>

#import <AppKit/AppKit.h>
#include <os/log.h>

namespace marrowby {

namespace {

std::optional<std::string> optionalText(id value) {
    if (![value isKindOfClass:NSString.class]) return std::nullopt;
    return plainText(value);
}

/// Posted to this process’s own centre.
constexpr const char* vaultDidChange = "app.quenby.unlock.vault.didChange";

os_log_t systemLog() {
    static const os_log_t log = os_log_create("app.quenby.unlock", "engine");
    return log;
}

std::string vaultService() {
    return LoginKeychainKeyStore::vaultService(optionalText(NSBundle.mainBundle.bundleIdentifier));
}

UnlockModel::Resources resources() {
    NSBundle* const bundle = NSBundle.mainBundle;
    NSString* const support =
        NSSearchPathForDirectoriesInDomains(NSApplicationSupportDirectory, NSUserDomainMask, YES)
            .firstObject;
    const SFaceEmbedder::Resource embedder;
    const auto testTag = optionalText([bundle objectForInfoDictionaryKey:@"MarrowbyTestTag"]);
    const auto chosen =
        optionalText([NSUserDefaults.standardUserDefaults objectForKey:@"sharedNamespace"]);
    if (const auto name = sharedNamespace(chosen, testTag))
        os_log(systemLog(), "The namespace is %{public}s.", name->c_str());
    return {.dataBase = plainText(support),
            .testTag = testTag,
            .models = {.folder = plainText(bundle.resourcePath),
                       .name = "standard",
                       .embedderFile = embedder.fileName,
                       .embedderIdentifier = embedder.modelIdentifier,
                       .realFaceFile = std::string(MiniFASNet::defaultFileName)}};
}

}  // namespace

MacApplication::MacApplication()
    : keyStore_(keychain_, vaultService()),
      trialKeyStore_(keychain_, vaultService() + ".self-check", "self-check"),
      passwordVerifier_(accounts_, plainText(NSUserName())),
      application_(platform(), resources(), windows_,
                   {.log =
                        [](const LogLine& line) {
                            const os_log_type_t type = line.level == LogLine::Level::debug
                                                           ? OS_LOG_TYPE_DEBUG
                                                           : OS_LOG_TYPE_DEFAULT;
                            os_log_with_type(systemLog(), type, "%{public}s",
                                             line.withoutNames().c_str());
                        },
                    .terminate =
                        [] {
                            dispatch_async(dispatch_get_main_queue(), ^{
                              [NSApp terminate:nil];
                            });
                        }}) {}

void MacApplication::willTerminate() {
    application_.willTerminate();
}

SelfCheck::Services MacApplication::selfCheckServices() {
    auto own = resources();
    return {.words = macWords,
            .mainThread = mainThread_,
            .clock = clock_,
            .queues = queues_,
            .lockState = lockState_,
            .sessionInWords =
                [this] { return UnlockLockState::inWords(loginSession_.copyCurrentDictionary()); },
            .spaceKeys = spaceKeys_,
            .keyEvents = keyEvents_,
            .camera = std::make_shared<AVFoundationCaptureSession>(),
            .imaging = imaging_,
            .models = models_,
            .pack = std::move(own.models),
            .preparingAdvice = {},
            .trialKeyStore = trialKeyStore_,
            .cipher = cipher_,
            .ownerCheck = ownerCheck_,
            .windowServer = windowServer_};
}

bool MacApplication::isVisible() const {
    return !lockState_.isLocked();
}

UnlockPlatform MacApplication::platform() {
    return {.words = macWords,
            .mainThread = mainThread_,
            .clock = clock_,
            .queues = queues_,
            .lockEvents = lockMonitor_,
            .lockState = lockState_,
            .inputIdle = inputIdle_,
            .spaceKeys = spaceKeys_,
            .scanCamera = std::make_shared<AVFoundationCaptureSession>(),
            .enrollmentCamera = std::make_shared<AVFoundationCaptureSession>(),
            .scanVision = scanVision_,
            .enrollmentVision = enrollmentVision_,
            .models = models_,
            .imaging = imaging_,
            .fourier = fourier_,
            .cipher = cipher_,
            .files = files_,
            .keyStore = keyStore_,
            .ownerCheck = ownerCheck_,
            .passwordVerifier = passwordVerifier_,
            .defaults = defaults_,
            .keyEvents = keyEvents_,
            .systemSettings = systemSettings_,
            .windowServer = windowServer_,
            .activities = &activities_,
            .notices = &notices_,
            .vaultDidChange = [this] { localCenter_->post(vaultDidChange); }};
}

}  // namespace marrowby
