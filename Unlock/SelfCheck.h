// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Kit/CameraUseRegistry.h"
#include "Unlock/Fact.h"
#include "Unlock/Model/ModelPack.h"
#include "UnlockCore/Foundation/WeakSelf.h"
#include "UnlockCore/Platform/AuthenticatedCipher.h"
#include "UnlockCore/Platform/KeyEvents.h"
#include "UnlockCore/Platform/NeuralModel.h"
#include "UnlockCore/Platform/OwnerCheck.h"
#include "UnlockCore/Platform/PlatformWords.h"
#include "UnlockCore/Platform/ScreenLock.h"
#include "UnlockCore/Platform/SessionUnlocking.h"
#include "UnlockCore/Platform/SpaceKeys.h"
#include "UnlockCore/Platform/VaultKeyStore.h"
#include "UnlockCore/Platform/WindowServer.h"
#include "UnlockCore/Recognition/CameraManager.h"

#include <expected>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace marrowby {

/// Prints one line for each part that an unlock needs: permissions, session, camera (format and
/// first frame), models, key store, owner check. Prompts nobody, reveals no secret and leaves
/// nothing behind. Main thread; the services outlive it.
class SelfCheck {
  public:
    struct Services {
        const PlatformWords& words;
        MainThread& mainThread;
        const SystemClock& clock;
        WorkQueues& queues;
        const LockStateReading& lockState;
        /// The session's state as text without a full stop; `nullopt` without a session.
        std::function<std::optional<std::string>()> sessionInWords;
        const SpaceKeys& spaceKeys;
        KeyEvents& keyEvents;
        std::shared_ptr<CaptureSession> camera;
        const Imaging& imaging;
        NeuralModels& models;
        /// The error is a sentence.
        std::expected<ModelPack, std::string> pack;
        /// How the models are prepared, as a sentence; may be empty.
        std::string preparingAdvice;
        /// For a test key besides the vault's.
        VaultKeyStore& trialKeyStore;
        AuthenticatedCipher& cipher;
        OwnerCheck& ownerCheck;
        WindowServer& windowServer;
        /// Null where the lock is opened by typing only.
        SessionUnlocking* sessionUnlocking = nullptr;
    };

    /// Longest wait for the session and its desktop to answer.
    static constexpr TimeInterval longestAnswer{2};
    /// Longest wait for the camera's first frame.
    static constexpr TimeInterval longestWait{10};

    /// `onLine` gets every line; `onEnd` is called once, with whether all needed parts are there,
    /// and may destroy this.
    SelfCheck(Services services, std::function<void(const std::string&)> onLine,
              std::function<void(bool)> onEnd);
    SelfCheck(const SelfCheck&) = delete;
    SelfCheck& operator=(const SelfCheck&) = delete;

    void start();

  private:
    void say(const Fact& fact);
    void checkAll();
    void checkOpening();
    void checkPermissions();
    void checkSession();
    void checkModels();
    void checkKeyStore();
    void checkOwner();
    void checkTyping();
    void checkWindowSpace();
    void startCamera();
    void cameraEnds(const std::optional<Size>& picture);

    Services services_;
    std::function<void(const std::string&)> onLine_;
    std::function<void(bool)> onEnd_;
    bool isAllThere_ = true;
    CameraUseRegistry cameraUse_;
    CameraManager camera_;
    Date cameraBegan_;
    std::unique_ptr<MainThread::Timer> timeout_;
    std::unique_ptr<MainThread::Timer> answerTimeout_;
    WeakSelf<SelfCheck> weakSelf_{this};
};

}  // namespace marrowby
