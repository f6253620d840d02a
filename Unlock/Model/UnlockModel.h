// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Kit/CameraUseRegistry.h"
#include "Unlock/Model/FaceEnrollment.h"
#include "Unlock/Model/ModelPack.h"
#include "Unlock/Model/Outcome.h"
#include "Unlock/Model/PasswordCheck.h"
#include "Unlock/Model/ProtectedData.h"
#include "Unlock/Model/TrialLook.h"
#include "Unlock/Model/TryOut.h"
#include "Unlock/Model/UnlockPlatform.h"
#include "UnlockCore/Engine/LogLine.h"
#include "UnlockCore/Engine/UnlockReadiness.h"
#include "UnlockCore/Engine/UnlockSettings.h"
#include "UnlockCore/Foundation/WeakSelf.h"
#include "UnlockCore/Recognition/CameraManager.h"
#include "UnlockCore/Status/UnlockStatus.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace marrowby {

class EngineHost;

/// The application's long-lived model: keeps the settings, joins the protected data, the enrolment
/// and the engine, and publishes their state. Main thread.
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
        /// As ProtectedData::isEnrolled().
        bool isEnrolled = false;
        bool hasPassword = false;
        bool vaultUnlocked = false;
        /// Empty until the vault was opened.
        std::vector<FaceIdentity> identities;
        CameraManager::Permission cameraPermission = CameraManager::Permission::notDetermined;
        LockOpening opening = LockOpening::typing;
        /// As UnlockPlatform::mayOpen().
        bool accessibilityTrusted = false;
        bool maySpaceKeyBeHeard = false;
        bool hasCamera = false;
        bool isScreenLocked = false;
        /// As UnlockStatusFacts::hasSeenLocker.
        bool hasSeenLocker = false;
        /// As ProtectedData::fault().
        std::optional<SavedDataFault> fault;
        /// As ProtectedData::haveModelsChanged().
        bool modelsChanged = false;
        /// Between pause() and resume().
        bool isPaused = false;
        /// The last failure, for the user, or what is wrong with noticing locks or with the
        /// settings' file.
        std::optional<std::string> problem;
        UnlockSettings settings;
        friend bool operator==(const State&, const State&) = default;
    };

    struct Callbacks {
        /// The state has changed.
        std::function<void()> onChange;
        /// The engine's log.
        std::function<void(const LogLine&)> onLog;
        std::function<void()> onAskToUpdatePassword;
        /// After every frame of an enrolment.
        std::function<void(const EnrollmentSession&, const Bitmap& picture)> onEnrollmentProgress;
    };

    UnlockModel(UnlockPlatform platform, Resources resources, Callbacks callbacks);
    ~UnlockModel();
    UnlockModel(const UnlockModel&) = delete;
    UnlockModel& operator=(const UnlockModel&) = delete;

    [[nodiscard]] const State& state() const { return state_; }
    [[nodiscard]] const UnlockSettings& settings() const { return settings_; }
    [[nodiscard]] const PlatformWords& words() const { return platform_.words; }
    [[nodiscard]] UnlockStatus status() const { return UnlockStatus::of(statusFacts()); }
    /// Face, password or consent, and permissions are in place.
    [[nodiscard]] bool isReady() const;
    [[nodiscard]] std::vector<CameraDevice> cameras() const;
    [[nodiscard]] const ModelPack& models() const { return resources_.models; }
    /// As ProtectedData::isComparable().
    [[nodiscard]] bool isComparable(const FaceIdentity& face) const {
        return data_.isComparable(face);
    }

    /// Reads the permissions anew: their change is not notified.
    void refresh() { publish(); }
    void requestCameraAccess();
    /// Has the system ask the user, where it does so.
    void requestSpaceKeyAccess();
    void forgetProblem();

    /// Stores the settings. Switching Space on asks for its permission; switching off locks the
    /// vault.
    void apply(UnlockSettings settings);

    // Completions come on the main thread; a failure also becomes State::problem.

    /// Asks the owner if need be, as does every change of what is saved.
    void openVault(Completion completion);

    /// One capture at a time. A lock of the screen ends it.
    void captureFace(Completion completion);
    /// Also ends a capture under way; its completion is not called.
    void dropCapturedFace() { enrollment_.drop(); }
    [[nodiscard]] bool hasCapturedFace() const { return enrollment_.captured() != nullptr; }

    /// In place of the face `replacing`, which stays as it is until then; else as another one.
    void saveCapturedFace(const std::string& name, std::optional<UUID> replacing,
                          Completion completion);
    void renameFace(UUID id, const std::string& name, Completion completion);
    void setFaceEnabled(UUID id, bool enabled, Completion completion);
    void removeFace(UUID id, Completion completion);

    /// Saves only what the account accepts and can be typed. The password is wiped before the
    /// completion. Resets the password's health.
    void savePassword(SecretBytes password, Completion completion);
    /// Both, with one question to the owner.
    void saveCapturedFaceAndPassword(const std::string& name, SecretBytes password,
                                     Completion completion);

    /// The user allowed having the desktop open the lock. Saves the captured face, too, if there is
    /// one.
    void allowAsking(const std::string& name, Completion completion);

    /// Removes faces, password and key, and resets the settings. What could not be removed becomes
    /// State::problem.
    void eraseEverything();

    /// Looks for nobody until resumed, for this long at most, or until the process ends.
    void pause(std::optional<TimeInterval> atMost);
    void resume();

    /// The error says why there was no look.
    using LookEnd = std::function<void(const std::expected<TrialLook::Result, std::string>&)>;
    /// A look that types nothing. A lock of the screen ends it.
    void tryLook(LookEnd onEnd);

    struct TryOutCallbacks {
        std::function<void(const TryOut::View&)> onChange;
        /// With the reason, for the user; at once where it can't begin. Not after endTryOut().
        std::function<void(const std::string&)> onEnd;
    };
    /// Looks and shows what it thinks until endTryOut(), a lock of the screen or of the vault, a
    /// capture or another look.
    void startTryOut(TryOutCallbacks callbacks);
    void endTryOut() { endTryOut({}); }

    /// Builds the engine, once, as soon as a face is saved, and a password where one is typed.
    void wireEngine();

  private:
    [[nodiscard]] UnlockReadiness readiness() const;
    /// The password that is typed is saved, or asking the desktop is allowed.
    [[nodiscard]] bool isOpeningSetUp() const;
    void vaultChanged(const Outcome& loaded);
    void lockChanged(LockEvent event);
    void noteLocker();
    /// Opens the vault, then does `work`.
    void change(std::function<Outcome()> work, Completion completion);
    /// Checks the password, opens the vault, saves the password, then does `rest`.
    void saveChecked(SecretBytes password, ProtectedData::Purpose purpose,
                     std::function<Outcome()> rest, Completion completion);
    [[nodiscard]] Outcome saveCaptured(const std::string& name, std::optional<UUID> replacing);
    /// Calls show(), then `completion`.
    [[nodiscard]] Completion showing(Completion completion);
    /// Makes a failure State::problem, or clears it.
    void show(const Outcome& outcome);
    [[nodiscard]] UnlockStatusFacts statusFacts() const;
    [[nodiscard]] std::optional<std::string> reasonNotToLook() const;
    void endTrial(const std::expected<TrialLook::Result, std::string>& result);
    /// Without a reason the callback isn't called.
    void endTryOut(const std::string& reason);
    void offerLocker(const std::string& path);
    void store(UnlockSettings settings);
    [[nodiscard]] State currentState() const;
    [[nodiscard]] std::optional<std::string> currentProblem() const;
    /// Tells the engine and the windows if the state has changed.
    void publish();

    UnlockPlatform platform_;
    Resources resources_;
    Callbacks callbacks_;
    UnlockSettings settings_;
    std::optional<std::string> problem_;
    /// As told by the last event.
    bool isScreenLocked_;
    CameraUseRegistry cameraUse_;
    ProtectedData data_;
    PasswordCheck passwordCheck_;
    FaceEnrollment enrollment_;
    /// As of the last publish().
    State state_;
    std::unique_ptr<EngineHost> engine_;
    struct Pause {
        /// None without an end.
        std::unique_ptr<MainThread::Timer> end;
    };
    std::optional<Pause> pause_;
    struct Trial {
        LookEnd onEnd;
        std::unique_ptr<TrialLook> look;
    };
    struct Trying {
        std::function<void(const std::string&)> onEnd;
        std::unique_ptr<TryOut> tryOut;
    };
    /// The look of the application's own that is under way.
    std::variant<std::monostate, Trial, Trying> ownLook_;
    WeakSelf<UnlockModel> weakSelf_{this};
};

}  // namespace marrowby
