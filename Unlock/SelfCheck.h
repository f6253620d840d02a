#pragma once

#include "Kit/CameraUseRegistry.h"
#include "Unlock/Model/ModelPack.h"
#include "UnlockCore/Platform/AuthenticatedCipher.h"
#include "UnlockCore/Platform/KeyEvents.h"
#include "UnlockCore/Platform/LockStateReading.h"
#include "UnlockCore/Platform/NeuralModel.h"
#include "UnlockCore/Platform/OwnerCheck.h"
#include "UnlockCore/Platform/PlatformWords.h"
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

/// Says in one line each what of this computer an unlock would find: what is allowed, the session,
/// the camera with its format and first picture, the networks, the key store, the owner's check. It
/// asks the user nothing, says no secret and leaves nothing behind. Main thread; the services
/// outlive it.
class SelfCheck {
  public:
    struct Services {
        const PlatformWords& words;
        MainThread& mainThread;
        const SystemClock& clock;
        WorkQueues& queues;
        const LockStateReading& lockState;
        /// What the system says of the session, without a full stop; nothing where there is none.
        std::function<std::optional<std::string>()> sessionInWords;
        const SpaceKeys& spaceKeys;
        KeyEvents& keyEvents;
        std::shared_ptr<CaptureSession> camera;
        const Imaging& imaging;
        NeuralModels& models;
        /// Or the sentence why there is none.
        std::expected<ModelPack, std::string> pack;
        /// Of a key beside the vault's.
        VaultKeyStore& trialKeyStore;
        AuthenticatedCipher& cipher;
        OwnerCheck& ownerCheck;
        WindowServer& windowServer;
    };

    /// How long the camera may take for its first picture.
    static constexpr TimeInterval longestWait{10};

    /// `onLine` gets every line; `onEnd`, once, whether all that an unlock needs is there. It may
    /// destroy this.
    SelfCheck(Services services, std::function<void(const std::string&)> onLine,
              std::function<void(bool)> onEnd);
    SelfCheck(const SelfCheck&) = delete;
    SelfCheck& operator=(const SelfCheck&) = delete;

    void start();

  private:
    enum class Need { needed, optional };
    void say(std::string_view subject, bool isGood, const std::string& what,
             Need need = Need::needed);
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
    std::unique_ptr<MainThread::Timer> patience_;
    std::shared_ptr<const bool> alive_ = std::make_shared<const bool>(true);
};

}  // namespace marrowby
