#pragma once

#include "Kit/CameraUseRegistry.h"
#include "Unlock/Model/EnrollmentCapture.h"
#include "Unlock/Model/ModelPack.h"
#include "Unlock/Model/UnlockPlatform.h"
#include "UnlockCore/Engine/LogLine.h"
#include "UnlockCore/Engine/UnlockReadiness.h"
#include "UnlockCore/Engine/UnlockSettings.h"
#include "UnlockCore/LockScreenServices/VaultAutoLocker.h"
#include "UnlockCore/Recognition/CameraManager.h"
#include "UnlockCore/Status/UnlockStatus.h"
#include "UnlockCore/Storage/AppDataFolder.h"
#include "UnlockCore/Storage/CredentialStore.h"
#include "UnlockCore/Storage/FaceStore.h"
#include "UnlockCore/Storage/Vault.h"

#include <expected>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace marrowby {

/// The application's one long-lived model: owns the protected stores, follows the lock, and owns
/// once wired the engine with all its collaborators. Main thread.
class UnlockModel {
  public:
    struct Resources {
        /// The user's folder for application data.
        std::filesystem::path dataBase;
        std::optional<std::string> testTag;
        ModelPack models;
    };

    /// What is shown to the user.
    struct State {
        /// At least one face is saved; before the vault was open, that there is a file of them.
        bool isEnrolled = false;
        bool hasPassword = false;
        bool vaultUnlocked = false;
        /// Empty until the vault was open.
        std::vector<FaceIdentity> identities;
        CameraManager::Permission cameraPermission = CameraManager::Permission::notDetermined;
        bool accessibilityTrusted = false;
        bool maySpaceKeyBeHeard = false;
        /// Faces are in use, none of them saved by the networks that are here now.
        bool modelsChanged = false;
        /// The last sentence for the user about something that failed.
        std::optional<std::string> problem;
        UnlockSettings settings;
        friend bool operator==(const State&, const State&) = default;
    };

    struct Callbacks {
        /// The state is another than before.
        std::function<void()> onChange;
        /// The engine's log, a short sentence at a time.
        std::function<void(const LogLine&)> onLog;
        std::function<void()> onAskToUpdatePassword;
        /// After every frame of an enrolment.
        std::function<void(const EnrollmentSession&)> onEnrollmentProgress;
    };

    /// Nothing, or the sentence for the user, which is then the state's problem, too.
    using Completion = std::function<void(std::expected<void, std::string>)>;

    UnlockModel(UnlockPlatform platform, Resources resources, Callbacks callbacks);
    ~UnlockModel();
    UnlockModel(const UnlockModel&) = delete;
    UnlockModel& operator=(const UnlockModel&) = delete;

    [[nodiscard]] const State& state() const { return state_; }
    [[nodiscard]] const UnlockSettings& settings() const { return settings_; }
    [[nodiscard]] const PlatformWords& words() const { return platform_.words; }
    [[nodiscard]] UnlockStatus status() const;
    /// Face, password and permissions are in place.
    [[nodiscard]] bool isReady() const;
    [[nodiscard]] std::vector<CameraDevice> cameras() const;
    [[nodiscard]] const ModelPack& networks() const { return resources_.models; }
    /// Only what these very networks saved can be compared with what they see.
    [[nodiscard]] bool canLookFor(const FaceIdentity& face) const {
        return face.models == networks().sums;
    }

    /// Reads anew what nobody tells of: the permissions.
    void refresh();
    void requestCameraAccess();
    /// Has the system list this application among those that may watch keys, and ask the user.
    void requestSpaceKeyAccess();
    void forgetProblem();

    /// Stores the settings and lets a running engine know. A user who switches Space on is asked
    /// for what that needs. Switching off locks the vault.
    void apply(UnlockSettings settings);

    /// Asks the owner if need be. Faces are loaded whenever the vault opens.
    void openVault(const std::string& reason, Completion completion);
    /// To show what is saved.
    void openVault(Completion completion);

    /// Guides the person in front of the camera through the poses; what was captured is kept until
    /// it is saved or dropped: all samples or nothing. One capture at a time; not while the screen
    /// is locked.
    void captureLook(Completion completion);
    /// Ends a capture, whose completion does not come, and drops what was captured.
    void dropCapturedLook();
    [[nodiscard]] bool hasCapturedLook() const { return capturedLook_.has_value(); }

    /// Saves what was captured as a new identity.
    void saveCapturedLook(const std::string& name, Completion completion);
    void setLookEnabled(UUID id, bool enabled, Completion completion);
    void removeLook(UUID id, Completion completion);

    /// Only what the account accepts and can be typed is saved. The caller's bytes are overwritten
    /// when the completion comes at the latest. Makes the standing of the password good again.
    void savePassword(SecretBytes password, Completion completion);
    /// Both at once, for one confirmation of the owner.
    void saveCapturedLookAndPassword(const std::string& name, SecretBytes password,
                                     Completion completion);

    /// Removes faces, password and key; the settings fall back to a fresh start's. What could not
    /// be removed is the problem.
    void eraseEverything();

    /// Builds the engine, once and only where a face and a password are saved, and lets it follow
    /// the lock screen.
    void wireEngine();

  private:
    struct Engine;
    struct Enrollment;
    struct CapturedLook {
        std::vector<FaceSample> samples;
        std::string modelIdentifier;
        std::int64_t dimension = 0;
    };
    using Saved = std::expected<void, std::string>;
    using CheckedPassword = std::expected<std::shared_ptr<SecretBytes>, std::string>;

    [[nodiscard]] UnlockReadiness readiness() const;
    void onVaultChanged();
    [[nodiscard]] std::expected<void, StorageError> loadFaces();
    [[nodiscard]] std::vector<FaceIdentity> facesToLookFor() const;
    [[nodiscard]] bool haveModelsChanged() const;
    /// An open vault is locked on time, whoever opened it and whatever it was opened for.
    void watchVault();
    void onLockEvent(LockEvent event);
    void finishCapture(std::expected<std::vector<FaceSample>, std::string> samples);
    void check(SecretBytes password, std::function<void(CheckedPassword)> then);
    /// Checks, opens the vault, seals the password and then does the rest.
    void saveChecked(SecretBytes password, const std::string& reason, std::function<Saved()> rest,
                     Completion completion);
    [[nodiscard]] Saved seal(SecretBytes& password);
    [[nodiscard]] Saved sealCapturedLook(const std::string& name);
    /// Notes the outcome as the state's problem on its way to `completion`.
    [[nodiscard]] Completion noting(Completion completion);
    void offerLocker(const std::string& path);
    void store(UnlockSettings settings);
    [[nodiscard]] State currentState() const;
    void publish();

    UnlockPlatform platform_;
    Resources resources_;
    Callbacks callbacks_;
    /// Null as soon as this goes.
    std::shared_ptr<UnlockModel*> self_;

    AppDataFolder dataFolder_;
    Vault vault_;
    FaceStore faceStore_;
    CredentialStore credentialStore_;
    CameraUseRegistry cameraUse_;
    CameraManager enrollmentCamera_;
    UnlockSettings settings_;
    VaultAutoLocker autoLocker_;
    std::optional<std::string> problem_;
    /// As of the last change that was told of.
    State state_;

    std::unique_ptr<Enrollment> enrollment_;
    std::optional<CapturedLook> capturedLook_;
    std::unique_ptr<Engine> engine_;
    /// From a lock to its unlock.
    std::unique_ptr<ProcessActivities::Activity> lockedActivity_;
};

}  // namespace marrowby
