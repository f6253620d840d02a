// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Platforms/Posix/OpenSslCipher.h"
#include "Platforms/Posix/PosixFileSystem.h"
#include "Platforms/macOS/AVFoundationCaptureSession.h"
#include "Platforms/macOS/AppKitSystemSettings.h"
#include "Platforms/macOS/AppKitWindowServer.h"
#include "Platforms/macOS/CoreGraphicsInputIdle.h"
#include "Platforms/macOS/CoreGraphicsKeyEvents.h"
#include "Platforms/macOS/CoreGraphicsLoginSession.h"
#include "Platforms/macOS/CoreImageImaging.h"
#include "Platforms/macOS/CoreMLNeuralModels.h"
#include "Platforms/macOS/DispatchWorkQueues.h"
#include "Platforms/macOS/FoundationNotificationCenter.h"
#include "Platforms/macOS/FoundationProcessActivities.h"
#include "Platforms/macOS/FoundationSystemClock.h"
#include "Platforms/macOS/IOKitKeyboardDevices.h"
#include "Platforms/macOS/LocalOwnerAuthentication.h"
#include "Platforms/macOS/OpenDirectoryAccounts.h"
#include "Platforms/macOS/Rules/DeviceOwnerCheck.h"
#include "Platforms/macOS/Rules/HidSpaceKeys.h"
#include "Platforms/macOS/Rules/LockMonitor.h"
#include "Platforms/macOS/Rules/LoginKeychainKeyStore.h"
#include "Platforms/macOS/Rules/OpenDirectoryPasswordVerifier.h"
#include "Platforms/macOS/Rules/WindowServerLockState.h"
#include "Platforms/macOS/RunLoopMainThread.h"
#include "Platforms/macOS/SecurityKeychain.h"
#include "Platforms/macOS/UserDefaultsStore.h"
#include "Platforms/macOS/UserNotificationNotices.h"
#include "Platforms/macOS/VDspFourierTransform.h"
#include "Platforms/macOS/VisionFaceVision.h"
#include "Unlock/SelfCheck.h"
#include "Unlock/UnlockApplication.h"
#include "Unlock/macOS/AppKitApplicationWindows.h"

#include <memory>

namespace marrowby {

/// The application on a Mac with its services and windows. Main thread.
class MacApplication {
  public:
    MacApplication();
    MacApplication(const MacApplication&) = delete;
    MacApplication& operator=(const MacApplication&) = delete;

    [[nodiscard]] UnlockApplication& application() { return application_; }
    /// Wipes the key and cancels pending work; the services stay for work that still runs.
    void willTerminate();
    [[nodiscard]] SelfCheck::Services selfCheckServices();
    [[nodiscard]] bool isVisible() const;

  private:
    [[nodiscard]] UnlockPlatform platform();

    RunLoopMainThread mainThread_;
    FoundationSystemClock clock_;
    DispatchWorkQueues queues_;
    std::unique_ptr<NotificationCenter> workspaceCenter_ =
        FoundationNotificationCenter::workspace(mainThread_);
    std::unique_ptr<NotificationCenter> distributedCenter_ =
        FoundationNotificationCenter::distributed(mainThread_);
    std::unique_ptr<NotificationCenter> localCenter_ =
        FoundationNotificationCenter::local(mainThread_);
    LockMonitor lockMonitor_{*workspaceCenter_, *distributedCenter_};
    CoreGraphicsLoginSession loginSession_;
    const WindowServerLockState lockState_{loginSession_};
    CoreGraphicsInputIdle idleCounters_;
    HidInputIdle inputIdle_{idleCounters_};
    IOKitKeyboardDevices keyboards_;
    HidSpaceKeys spaceKeys_{keyboards_};
    VisionFaceVision scanVision_;
    VisionFaceVision enrollmentVision_;
    CoreMLNeuralModels models_;
    CoreImageImaging imaging_;
    VDspFourierTransform fourier_;
    OpenSslCipher cipher_;
    PosixFileSystem files_;
    SecurityKeychain keychain_;
    LoginKeychainKeyStore keyStore_;
    /// For the self-check's test key.
    LoginKeychainKeyStore trialKeyStore_;
    LocalOwnerAuthentication ownerAuthentication_;
    DeviceOwnerCheck ownerCheck_{ownerAuthentication_};
    OpenDirectoryAccounts accounts_;
    OpenDirectoryPasswordVerifier passwordVerifier_;
    UserDefaultsStore defaults_;
    CoreGraphicsKeyEvents keyEvents_;
    AppKitSystemSettings systemSettings_;
    AppKitWindowServer windowServer_;
    FoundationProcessActivities activities_;
    UserNotificationNotices notices_{mainThread_};
    AppKitApplicationWindows windows_;
    UnlockApplication application_;
};

}  // namespace marrowby
