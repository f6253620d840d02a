// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Platform/AuthenticatedCipher.h"
#include "UnlockCore/Platform/CaptureSession.h"
#include "UnlockCore/Platform/DefaultsStore.h"
#include "UnlockCore/Platform/DesktopNotices.h"
#include "UnlockCore/Platform/FaceVision.h"
#include "UnlockCore/Platform/FileSystem.h"
#include "UnlockCore/Platform/FourierTransform.h"
#include "UnlockCore/Platform/Imaging.h"
#include "UnlockCore/Platform/InputIdle.h"
#include "UnlockCore/Platform/KeyEvents.h"
#include "UnlockCore/Platform/MacPasswordVerifying.h"
#include "UnlockCore/Platform/MainThread.h"
#include "UnlockCore/Platform/NeuralModel.h"
#include "UnlockCore/Platform/OwnerCheck.h"
#include "UnlockCore/Platform/PlatformWords.h"
#include "UnlockCore/Platform/ProcessActivities.h"
#include "UnlockCore/Platform/ScreenLock.h"
#include "UnlockCore/Platform/SessionUnlocking.h"
#include "UnlockCore/Platform/SpaceKeys.h"
#include "UnlockCore/Platform/StatusItem.h"
#include "UnlockCore/Platform/SystemClock.h"
#include "UnlockCore/Platform/SystemSettings.h"
#include "UnlockCore/Platform/VaultKeyStore.h"
#include "UnlockCore/Platform/WindowServer.h"
#include "UnlockCore/Platform/WorkQueues.h"

#include <functional>
#include <memory>

namespace marrowby {

/// The services of the platform, which outlive the application.
struct UnlockPlatform {
    const PlatformWords& words;
    MainThread& mainThread;
    SystemClock& clock;
    WorkQueues& queues;

    LockEventWatching& lockEvents;
    const LockStateReading& lockState;
    InputIdle& inputIdle;
    SpaceKeys& spaceKeys;

    /// One session for scans and one for enrolment.
    std::shared_ptr<CaptureSession> scanCamera;
    std::shared_ptr<CaptureSession> enrollmentCamera;
    /// One for each camera queue.
    FaceVision& scanVision;
    FaceVision& enrollmentVision;
    NeuralModels& models;
    Imaging& imaging;
    const FourierTransform& fourier;

    AuthenticatedCipher& cipher;
    FileSystem& files;
    VaultKeyStore& keyStore;
    OwnerCheck& ownerCheck;
    MacPasswordVerifying& passwordVerifier;
    DefaultsStore& defaults;

    KeyEvents& keyEvents;
    SystemSettings& systemSettings;
    /// Shows the island above the lock screen.
    WindowServer& windowServer;
    /// Null where the lock is opened by typing only.
    SessionUnlocking* sessionUnlocking = nullptr;
    /// Null where the system does not throttle processes.
    ProcessActivities* activities = nullptr;
    /// Null where the desktop shows none.
    DesktopNotices* notices = nullptr;
    /// Tells of an unlock where no island can; null elsewhere.
    DesktopNotices* unlockNotices = nullptr;
    StatusItem* statusItem = nullptr;
    /// Called after the vault was opened or locked, on that thread. May be empty.
    std::function<void()> vaultDidChange{};

    [[nodiscard]] LockOpening opening() const {
        return sessionUnlocking != nullptr ? sessionUnlocking->opening() : LockOpening::typing;
    }
    /// Whether the system lets this process open the lock.
    [[nodiscard]] bool mayOpen() const {
        return opening() == LockOpening::typing ? keyEvents.canType()
                                                : sessionUnlocking->isSessionKnown();
    }
};

}  // namespace marrowby
