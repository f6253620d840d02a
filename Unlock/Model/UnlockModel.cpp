#include "Unlock/Model/UnlockModel.h"

#include "Kit/LockScreen.h"
#include "Unlock/Island/LockScreenOverlayController.h"
#include "UnlockCore/Engine/SystemUnlockClock.h"
#include "UnlockCore/Engine/UnlockCoordinator.h"
#include "UnlockCore/Liveness/MiniFASNet.h"
#include "UnlockCore/LockScreenServices/CameraFaceScanner.h"
#include "UnlockCore/LockScreenServices/StoredPasswordTyper.h"
#include "UnlockCore/LockWatching/LockScreenActivityMonitor.h"
#include "UnlockCore/LockWatching/OwnKeystrokes.h"
#include "UnlockCore/LockWatching/SpaceKeyMonitor.h"
#include "UnlockCore/PasswordEntry/KeystrokePlan.h"
#include "UnlockCore/Recognition/MatchStrictness.h"
#include "UnlockCore/Recognition/SFaceEmbedder.h"
#include "UnlockCore/Storage/UnlockDataEraser.h"

#include <algorithm>
#include <optional>
#include <tuple>
#include <utility>
#include <variant>

namespace marrowby {

namespace {

using Event = UnlockCoordinator::Event;

std::string openSavedReason(const PlatformWords& words) {
    return "open your saved face and " + std::string(words.password.inSentence);
}
std::string savePasswordReason(const PlatformWords& words) {
    return "save your " + std::string(words.password.inSentence);
}
std::string saveBothReason(const PlatformWords& words) {
    return "save your face and " + std::string(words.password.inSentence);
}

std::string sentence(const StorageError& error, const PlatformWords& words) {
    if (std::holds_alternative<OwnerCheckError>(error) &&
        std::holds_alternative<OwnerCheckError::Cancelled>(std::get<OwnerCheckError>(error))) {
        return std::string(words.ownerCheck.prompt) + " was cancelled, so nothing was saved.";
    }
    return description(error, words);
}

std::expected<void, std::string> sentence(const std::expected<void, StorageError>& result,
                                          const PlatformWords& words) {
    if (result) return {};
    return std::unexpected(sentence(result.error(), words));
}

/// Why a checked password is not saved; nothing for the right one.
std::optional<std::string> refusalOf(const PasswordCheckResult& result,
                                     const PlatformWords& words) {
    if (std::holds_alternative<PasswordCheckResult::Correct>(result)) return std::nullopt;
    if (const auto* unavailable = std::get_if<PasswordCheckResult::Unavailable>(&result)) {
        return "The password couldn’t be checked, so nothing was saved. " +
               unavailable->explanation;
    }
    return "That isn’t your " + std::string(words.password.inSentence) + ".";
}

CameraFaceScanner::LoadEmbedder embedderLoader(const ModelPack& pack,
                                               const UnlockPlatform& platform) {
    return [pack, &models = platform.models, &imaging = platform.imaging]()
               -> std::expected<std::shared_ptr<FaceEmbedder>, FaceModelError> {
        return SFaceEmbedder::load(pack.folder,
                                   {.fileName = pack.embedderFile,
                                    .modelIdentifier = pack.embedderIdentifier,
                                    .sha256 = pack.sumOf("embedder")},
                                   models, imaging);
    };
}

}  // namespace

/// The engine and the collaborators that only it uses.
struct UnlockModel::Engine {
    Engine(UnlockModel& model, UnlockPlatform& platform);

    OwnKeystrokes ownKeystrokes;
    TrackedKeyEvents keyEvents;
    ForeignInputIdle inputIdle;
    CameraFaceScanner scanner;
    StoredPasswordTyper typer;
    SpaceKeyMonitor spaceKeys;
    LockScreenActivityMonitor activity;
    SystemUnlockClock clock;
    LockScreen lockScreen;
    LockScreenOverlayController island;
    UnlockCoordinator coordinator;
};

UnlockModel::Engine::Engine(UnlockModel& model, UnlockPlatform& platform)
    : ownKeystrokes(platform.inputIdle),
      keyEvents(platform.keyEvents, ownKeystrokes),
      inputIdle(platform.inputIdle, ownKeystrokes),
      scanner(platform.lookCamera,
              {.queues = platform.queues,
               .mainThread = platform.mainThread,
               .clock = platform.clock,
               .imaging = platform.imaging,
               .vision = platform.lookVision,
               .fourier = platform.fourier,
               .registry = model.cameraUse_,
               .words = platform.words},
              embedderLoader(model.resources_.models, platform),
              [pack = model.resources_.models, &models = platform.models] {
                  return MiniFASNet::load(pack.folder, models, NeuralModels::ComputeUnits::all,
                                          pack.realFaceFile, pack.realFaceIdentifier,
                                          pack.sumOf("realFace"));
              }),
      typer(model.credentialStore_, keyEvents, platform.queues, platform.mainThread,
            platform.words),
      spaceKeys(platform.spaceKeys, ownKeystrokes),
      activity(inputIdle, platform.mainThread, platform.clock),
      clock(platform.clock, platform.mainThread),
      lockScreen(platform.windowServer, platform.lockState),
      island(
          {.lockScreen = lockScreen, .mainThread = platform.mainThread, .clock = platform.clock}),
      coordinator(model.settings().passwordHealth,
                  {.lockState = platform.lockState,
                   .scanner = scanner,
                   .typer = typer,
                   .presenter = &island,
                   .spaceKeys = spaceKeys,
                   .activity = activity,
                   .clock = clock,
                   .readiness = [&model] { return model.readiness(); }}) {
    coordinator.setCallbacks({.onHealthChange =
                                  [&model](const PasswordHealth& health) {
                                      UnlockSettings settings = model.settings();
                                      settings.passwordHealth = health;
                                      model.store(std::move(settings));
                                      model.publish();
                                  },
                              .onAskToUpdatePassword =
                                  [&model] {
                                      if (model.callbacks_.onAskToUpdatePassword)
                                          model.callbacks_.onAskToUpdatePassword();
                                  },
                              .onLog =
                                  [&model](const LogLine& line) {
                                      if (model.callbacks_.onLog) model.callbacks_.onLog(line);
                                  },
                              .onChange = {}});
    island.onHover = [this] { coordinator.send(Event::Activate{}); };
    spaceKeys.onSpace = [this] { coordinator.send(Event::SpaceKey{}); };
    activity.onActivity = [this](const InputActivity& input) {
        coordinator.send(Event::Activity{input});
    };
    scanner.preload();
}

struct UnlockModel::Enrollment {
    std::shared_ptr<FaceEmbedder> embedder;
    Completion completion;
    std::unique_ptr<EnrollmentCapture> capture;
};

UnlockModel::UnlockModel(UnlockPlatform platform, Resources resources, Callbacks callbacks)
    : platform_(std::move(platform)),
      resources_(std::move(resources)),
      callbacks_(std::move(callbacks)),
      self_(std::make_shared<UnlockModel*>(this)),
      dataFolder_(AppDataFolder::in(resources_.dataBase, resources_.testTag)),
      vault_(platform_.keyStore, platform_.ownerCheck,
             [&files = platform_.files, folder = dataFolder_] {
                 return files.exists(folder.facesFile()) || files.exists(folder.passwordFile());
             },
             {.cipher = platform_.cipher,
              .mainThread = platform_.mainThread,
              .clock = platform_.clock,
              .didChange =
                  [weak = std::weak_ptr(self_), &mainThread = platform_.mainThread,
                   announce = platform_.vaultDidChange] {
                      if (announce) announce();
                      mainThread.post([weak] {
                          if (const auto self = weak.lock()) (*self)->onVaultChanged();
                      });
                  }}),
      faceStore_({platform_.files, dataFolder_.facesFile(), VaultPurpose::faces}, vault_,
                 platform_.cipher, platform_.clock, platform_.words),
      credentialStore_({platform_.files, dataFolder_.passwordFile(), VaultPurpose::password},
                       vault_),
      enrollmentCamera_(platform_.enrollmentCamera,
                        {.queues = platform_.queues,
                         .mainThread = platform_.mainThread,
                         .clock = platform_.clock,
                         .imaging = platform_.imaging,
                         .registry = cameraUse_},
                        CameraFaceScanner::workingLongEdge),
      autoLocker_(
          vault_, [this] { return length(settings_.autoLock); }, platform_.mainThread,
          platform_.clock) {
    UnlockSettings::normaliseLivenessMode(platform_.defaults);
    settings_ = UnlockSettings::load(platform_.defaults);
    platform_.keyEvents.vouchFor(settings_.vouchedLockers);
    platform_.keyEvents.setUnknownLockerHandler(
        [weak = std::weak_ptr(self_), &mainThread = platform_.mainThread](const std::string& path) {
            mainThread.post([weak, path] {
                if (const auto self = weak.lock()) (*self)->offerLocker(path);
            });
        });
    state_ = currentState();
    platform_.lockEvents.onEvent = [this](LockEvent event) { onLockEvent(event); };
    platform_.lockEvents.start();
}

UnlockModel::~UnlockModel() {
    self_.reset();
    platform_.lockEvents.stop();
    platform_.lockEvents.onEvent = {};
    platform_.keyEvents.setUnknownLockerHandler({});
}

UnlockStatus UnlockModel::status() const {
    return UnlockStatus::of({.faceSaved = state_.isEnrolled,
                             .passwordSaved = state_.hasPassword,
                             .passwordNeedsUpdate = settings().passwordHealth.suspended,
                             .isEnabled = settings().isEnabled,
                             .camera = state_.cameraPermission,
                             .accessibilityAllowed = state_.accessibilityTrusted,
                             .touchIDDone = state_.vaultUnlocked,
                             .modelsChanged = state_.modelsChanged});
}

bool UnlockModel::isReady() const {
    return state_.isEnrolled && state_.hasPassword && state_.accessibilityTrusted &&
           state_.cameraPermission == CameraManager::Permission::granted;
}

std::vector<CameraDevice> UnlockModel::cameras() const {
    return CameraManager::availableCameras(*platform_.enrollmentCamera);
}

void UnlockModel::refresh() {
    publish();
}

void UnlockModel::requestCameraAccess() {
    enrollmentCamera_.requestAccess([weak = std::weak_ptr(self_)](bool /*granted*/) {
        if (const auto self = weak.lock()) (*self)->publish();
    });
}

void UnlockModel::requestSpaceKeyAccess() {
    if (!platform_.spaceKeys.hasListenAccess()) platform_.spaceKeys.requestListenAccess();
}

void UnlockModel::forgetProblem() {
    problem_.reset();
    publish();
}

void UnlockModel::apply(UnlockSettings settings) {
    const bool isSwitchedOff = settings_.isEnabled && !settings.isEnabled;
    const bool isSpaceNew = settings.triggers.contains(UnlockTrigger::onSpace) &&
                            !settings_.triggers.contains(UnlockTrigger::onSpace);
    store(std::move(settings));
    if (engine_) engine_->coordinator.send(Event::SettingsChanged{});
    if (isSwitchedOff) vault_.lock();
    if (isSpaceNew) requestSpaceKeyAccess();
    publish();
}

void UnlockModel::openVault(const std::string& reason, Completion completion) {
    vault_.unlock(reason, [weak = std::weak_ptr(self_), completion = std::move(completion)](
                              std::expected<void, StorageError> result) {
        const auto self = weak.lock();
        if (!self) return;
        // The notification of the change may come later than this.
        if (result && !(*self)->faceStore_.isLoaded()) result = (*self)->loadFaces();
        completion(sentence(result, (*self)->platform_.words));
    });
}

void UnlockModel::openVault(Completion completion) {
    openVault(openSavedReason(platform_.words), noting(std::move(completion)));
}

void UnlockModel::captureLook(Completion completion) {
    completion = noting(std::move(completion));
    if (enrollment_) {
        completion(std::unexpected("Your face is being captured already."));
        return;
    }
    capturedLook_.reset();
    auto embedder = embedderLoader(resources_.models, platform_)();
    if (!embedder) {
        completion(std::unexpected(description(embedder.error())));
        return;
    }
    enrollment_.reset(new Enrollment{*embedder, std::move(completion), {}});
    enrollment_->capture = std::make_unique<EnrollmentCapture>(
        EnrollmentCapture::Services{.camera = enrollmentCamera_,
                                    .vision = platform_.enrollmentVision,
                                    .imaging = platform_.imaging,
                                    .mainThread = platform_.mainThread,
                                    .embedder = *embedder},
        EnrollmentCapture::Callbacks{
            .onProgress =
                [this](const EnrollmentSession& session) {
                    if (callbacks_.onEnrollmentProgress) callbacks_.onEnrollmentProgress(session);
                },
            .onDone =
                [this](std::vector<FaceSample> samples) { finishCapture(std::move(samples)); },
            .onFailed =
                [this](std::string text) { finishCapture(std::unexpected(std::move(text))); }});
    if (auto started = enrollment_->capture->start(settings().builtInDisplayCameraID); !started) {
        finishCapture(std::unexpected(description(started.error(), platform_.words)));
    }
}

void UnlockModel::dropCapturedLook() {
    enrollment_.reset();
    capturedLook_.reset();
}

void UnlockModel::finishCapture(std::expected<std::vector<FaceSample>, std::string> samples) {
    // The capture that calls this goes with the enrolment, on the next turn of the loop.
    std::shared_ptr<Enrollment> enrollment = std::move(enrollment_);
    std::expected<void, std::string> outcome;
    if (samples) {
        capturedLook_ = CapturedLook{.samples = *std::move(samples),
                                     .modelIdentifier = enrollment->embedder->modelIdentifier(),
                                     .dimension = enrollment->embedder->dimension()};
    } else {
        outcome = std::unexpected(std::move(samples.error()));
    }
    platform_.mainThread.post([weak = std::weak_ptr(self_), enrollment, outcome] {
        if (weak.lock()) enrollment->completion(outcome);
    });
}

void UnlockModel::saveCapturedLook(const std::string& name, Completion completion) {
    openVault(openSavedReason(platform_.words),
              [this, name, completion = noting(std::move(completion))](
                  const std::expected<void, std::string>& opened) {
                  completion(opened ? sealCapturedLook(name) : opened);
              });
}

void UnlockModel::setLookEnabled(UUID id, bool enabled, Completion completion) {
    openVault(openSavedReason(platform_.words),
              [this, id, enabled, completion = noting(std::move(completion))](
                  const std::expected<void, std::string>& opened) {
                  completion(opened ? sentence(faceStore_.setEnabled(enabled, id), platform_.words)
                                    : opened);
              });
}

void UnlockModel::removeLook(UUID id, Completion completion) {
    openVault(
        openSavedReason(platform_.words), [this, id, completion = noting(std::move(completion))](
                                              const std::expected<void, std::string>& opened) {
            if (!opened) {
                completion(opened);
                return;
            }
            // Without any face there is no file, so that a later start knows without the key.
            const auto& looks = faceStore_.identities();
            const bool isLast = looks.size() == 1 && looks.front().id == id;
            completion(
                sentence(isLast ? faceStore_.removeAll() : faceStore_.remove(id), platform_.words));
        });
}

void UnlockModel::savePassword(SecretBytes password, Completion completion) {
    saveChecked(
        std::move(password), savePasswordReason(platform_.words), [] { return Saved(); },
        std::move(completion));
}

void UnlockModel::saveCapturedLookAndPassword(const std::string& name, SecretBytes password,
                                              Completion completion) {
    saveChecked(
        std::move(password), saveBothReason(platform_.words),
        [this, name] { return sealCapturedLook(name); }, std::move(completion));
}

void UnlockModel::saveChecked(SecretBytes password, const std::string& reason,
                              std::function<Saved()> rest, Completion completion) {
    check(std::move(password),
          [this, reason, rest = std::move(rest),
           completion = noting(std::move(completion))](const CheckedPassword& checked) {
              if (!checked) {
                  completion(std::unexpected(checked.error()));
                  return;
              }
              openVault(reason, [this, rest, password = *checked, completion](const Saved& opened) {
                  // Saved a second time after a failure of the rest, a password is only itself
                  // again.
                  const Saved sealed = opened ? seal(*password) : opened;
                  password->wipe();
                  completion(sealed ? rest() : sealed);
              });
          });
}

void UnlockModel::check(SecretBytes password, std::function<void(CheckedPassword)> then) {
    if (password.empty()) {
        then(std::unexpected(std::string(description(CredentialError::empty))));
        return;
    }
    if (const auto objection = typablepassword::objection(password.values())) {
        password.wipe();
        then(std::unexpected(std::string(*objection)));
        return;
    }
    const auto held = std::make_shared<SecretBytes>(std::move(password));
    platform_.queues.background()->async([weak = std::weak_ptr(self_), held, then = std::move(then),
                                          &verifier = platform_.passwordVerifier,
                                          &mainThread = platform_.mainThread,
                                          &words = platform_.words] {
        const auto checked = verifier.check(held->values());
        mainThread.post([weak, held, then, refusal = refusalOf(checked, words)] {
            if (refusal) held->wipe();
            if (!weak.lock()) return;
            then(refusal ? CheckedPassword(std::unexpected(*refusal)) : CheckedPassword(held));
        });
    });
}

std::expected<void, std::string> UnlockModel::seal(SecretBytes& password) {
    const auto saved = credentialStore_.save(password);
    if (saved) {
        UnlockSettings settings = settings_;
        settings.passwordHealth = {};
        store(std::move(settings));
        if (engine_) engine_->coordinator.replacePasswordHealth({});
    }
    return sentence(saved, platform_.words);
}

std::expected<void, std::string> UnlockModel::sealCapturedLook(const std::string& name) {
    if (!capturedLook_) return std::unexpected("There is no captured face to save.");
    const auto saved =
        faceStore_.saveIdentity(capturedLook_->samples, name, capturedLook_->modelIdentifier,
                                capturedLook_->dimension, std::nullopt, resources_.models.sums);
    if (saved) capturedLook_.reset();
    return sentence(saved, platform_.words);
}

void UnlockModel::eraseEverything() {
    dropCapturedLook();
    const auto report =
        UnlockDataEraser::erase(faceStore_, credentialStore_, vault_, platform_.words);
    store({});
    problem_.reset();
    if (!report.problems.empty()) {
        std::string problems;
        for (const std::string& problem : report.problems)
            problems += (problems.empty() ? "" : " ") + problem;
        problem_ = std::move(problems);
    }
    if (engine_) {
        engine_->typer.stop();
        engine_->coordinator.replacePasswordHealth({});
        engine_->coordinator.send(Event::SettingsChanged{});
    }
    publish();
}

void UnlockModel::wireEngine() {
    if (!engine_ && state_.isEnrolled && state_.hasPassword)
        engine_ = std::make_unique<Engine>(*this, platform_);
}

UnlockReadiness UnlockModel::readiness() const {
    return {.isEnabled = settings().isEnabled,
            .triggers = settings().triggers,
            .showsUI = settings().showsAnimation,
            .scanDuration = TimeInterval(static_cast<double>(settings().scanSeconds)),
            .vaultUnlocked = vault_.isUnlocked(),
            .passwordSaved = credentialStore_.hasPassword(),
            .accessibilityTrusted = platform_.keyEvents.canType(),
            .spaceKeyAccess = platform_.spaceKeys.hasListenAccess(),
            .scan = {.cameraID = settings().builtInDisplayCameraID,
                     .identities = facesToLookFor(),
                     .threshold = threshold(settings().strictness),
                     .livenessMode = settings().livenessMode}};
}

void UnlockModel::onVaultChanged() {
    watchVault();
    if (vault_.isUnlocked()) {
        problem_.reset();
        if (const auto loaded = loadFaces(); !loaded)
            problem_ = sentence(loaded.error(), platform_.words);
    }
    if (engine_) engine_->coordinator.send(Event::SettingsChanged{});
    publish();
}

std::expected<void, StorageError> UnlockModel::loadFaces() {
    auto loaded = faceStore_.load();
    // Versions that kept no sums were used with the published networks. From here on a change is
    // seen. Where that can't be written, it is tried again the next time.
    if (loaded && resources_.models.isPublished)
        std::ignore = faceStore_.adoptModels(resources_.models.sums);
    if (loaded && haveModelsChanged() && callbacks_.onLog)
        callbacks_.onLog(
            {.detail = UnlockStatus(UnlockStatus::ModelsChanged{}).title(platform_.words)});
    return loaded;
}

std::vector<FaceIdentity> UnlockModel::facesToLookFor() const {
    std::vector<FaceIdentity> faces = faceStore_.identities();
    std::erase_if(faces, [this](const FaceIdentity& face) { return !canLookFor(face); });
    return faces;
}

bool UnlockModel::haveModelsChanged() const {
    const std::vector<FaceIdentity> faces = faceStore_.enabledIdentities();
    return !faces.empty() && std::ranges::none_of(faces, [this](const FaceIdentity& face) {
        return canLookFor(face);
    });
}

void UnlockModel::watchVault() {
    if (vault_.isUnlocked()) return autoLocker_.start();
    // Its own timer may be what locked the vault.
    platform_.mainThread.post([weak = std::weak_ptr(self_)] {
        const auto self = weak.lock();
        if (self && !(*self)->vault_.isUnlocked()) (*self)->autoLocker_.stop();
    });
}

void UnlockModel::onLockEvent(LockEvent event) {
    if (event == LockEvent::screenLocked && enrollment_) {
        // The camera belongs to the looks now.
        finishCapture(std::unexpected("The screen was locked, so nothing was captured."));
    }
    if (!engine_) return;
    if (event == LockEvent::screenLocked && platform_.activities != nullptr)
        lockedActivity_ = platform_.activities->begin("Waiting for you at the lock screen");
    if (event == LockEvent::screenUnlocked) lockedActivity_.reset();
    engine_->coordinator.setSleeping(platform_.lockEvents.isSleeping());
    engine_->coordinator.send(Event::Lock{event});
}

UnlockModel::Completion UnlockModel::noting(Completion completion) {
    return [this, completion = std::move(completion)](std::expected<void, std::string> outcome) {
        problem_.reset();
        if (!outcome) problem_ = outcome.error();
        publish();
        completion(std::move(outcome));
    };
}

void UnlockModel::offerLocker(const std::string& path) {
    UnlockSettings settings = settings_;
    if (settings.offerLocker(path)) apply(std::move(settings));
}

void UnlockModel::store(UnlockSettings settings) {
    platform_.keyEvents.vouchFor(settings.vouchedLockers);
    settings.save(platform_.defaults);
    settings_ = std::move(settings);
}

UnlockModel::State UnlockModel::currentState() const {
    const bool isEnrolled =
        faceStore_.isLoaded()
            ? !faceStore_.identities().empty()
            : !faceStore_.loadFailure() && platform_.files.exists(dataFolder_.facesFile());
    return State{.isEnrolled = isEnrolled,
                 .hasPassword = credentialStore_.hasPassword(),
                 .vaultUnlocked = vault_.isUnlocked(),
                 .identities = faceStore_.identities(),
                 .cameraPermission = enrollmentCamera_.permission(),
                 .accessibilityTrusted = platform_.keyEvents.canType(),
                 .maySpaceKeyBeHeard = platform_.spaceKeys.hasListenAccess(),
                 .modelsChanged = haveModelsChanged(),
                 .problem = problem_,
                 .settings = settings_};
}

void UnlockModel::publish() {
    State state = currentState();
    if (state == state_) return;
    state_ = std::move(state);
    if (callbacks_.onChange) callbacks_.onChange();
}

}  // namespace marrowby
