#pragma once

#include "Kit/CameraUseRegistry.h"
#include "Unlock/EnrollmentCapture.h"
#include "Unlock/ModelPack.h"
#include "Unlock/UnlockPlatform.h"
#include "UnlockCore/Engine/UnlockReadiness.h"
#include "UnlockCore/Engine/UnlockSettings.h"
#include "UnlockCore/LockWatching/LockMonitor.h"
#include "UnlockCore/Storage/AppDataFolder.h"
#include "UnlockCore/Storage/CredentialStore.h"
#include "UnlockCore/Storage/DeviceOwnerCheck.h"
#include "UnlockCore/Storage/FaceStore.h"
#include "UnlockCore/Storage/LoginKeychainKeyStore.h"
#include "UnlockCore/Storage/Vault.h"

#include <expected>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace marrowby {

/// The application's one long-lived model: owns the protected stores and the lock monitor, and once
/// wired the engine with all its collaborators. Main thread.
class UnlockModel {
  public:
    struct Resources {
        /// The user's folder for application data.
        std::filesystem::path dataBase;
        std::optional<std::string> bundleIdentifier;
        std::optional<std::string> testTag;
        /// The short name of the account whose password is saved.
        std::string userName;
        ModelPack models;
    };
    struct Callbacks {
        /// Something that is shown has changed.
        std::function<void()> onChange;
        /// The engine's log, a short sentence at a time.
        std::function<void(const std::string&)> onLog;
        std::function<void()> onAskToUpdatePassword;
        /// After every frame of an enrolment.
        std::function<void(const EnrollmentSession&)> onEnrollmentProgress;
    };
    /// Nothing, or the sentence for the user.
    using Completion = std::function<void(std::expected<void, std::string>)>;

    UnlockModel(UnlockPlatform platform, Resources resources, Callbacks callbacks);
    ~UnlockModel();
    UnlockModel(const UnlockModel&) = delete;
    UnlockModel& operator=(const UnlockModel&) = delete;

    [[nodiscard]] bool isEnrolled() const { return !faceStore_.identities().empty(); }
    [[nodiscard]] bool hasPassword() const { return credentialStore_.hasPassword(); }
    [[nodiscard]] bool isVaultUnlocked() const { return vault_.isUnlocked(); }
    [[nodiscard]] const UnlockSettings& settings() const { return settings_; }

    /// Why the saved face couldn’t be read when the vault opened last.
    [[nodiscard]] const std::optional<std::string>& problem() const { return problem_; }

    /// Stores the settings and lets a running engine know.
    void apply(UnlockSettings settings);

    /// Asks the owner if need be. Faces are loaded whenever the vault opens.
    void openVault(const std::string& reason, Completion completion);

    /// Guides the person in front of the camera through the poses and saves them as a new identity:
    /// all samples or nothing. One enrolment at a time.
    void enroll(std::string name, Completion completion);
    /// Drops what was captured; the completion does not come.
    void cancelEnrollment();

    /// Only what the account accepts and can be typed is saved. The caller's bytes are overwritten
    /// when the completion comes at the latest. Makes the standing of the password good again.
    void savePassword(SecretBytes password, Completion completion);

    /// Builds the engine, once, and lets it follow the lock screen.
    void wireEngine();

  private:
    struct Engine;

    [[nodiscard]] UnlockReadiness readiness() const;
    void onVaultChanged();
    void onLockEvent(LockEvent event);
    void sealPassword(const std::shared_ptr<SecretBytes>& password, Completion completion);
    void finishEnrollment(std::expected<std::vector<FaceSample>, std::string> samples);
    void changed();

    UnlockPlatform platform_;
    Resources resources_;
    Callbacks callbacks_;

    LockMonitor lockMonitor_;
    AppDataFolder dataFolder_;
    LoginKeychainKeyStore keyStore_;
    DeviceOwnerCheck ownerCheck_;
    Vault vault_;
    FaceStore faceStore_;
    CredentialStore credentialStore_;
    NotificationCenter::Token vaultObserver_;
    UnlockSettings settings_;
    std::optional<std::string> problem_;
    CameraUseRegistry cameraUse_;

    struct Enrollment;
    std::unique_ptr<Enrollment> enrollment_;
    std::unique_ptr<Engine> engine_;
    std::shared_ptr<UnlockModel*> self_;
};

}  // namespace marrowby
