#include "Unlock/UnlockModel.h"

#include "UnlockCore/Engine/SystemUnlockClock.h"
#include "UnlockCore/Engine/UnlockCoordinator.h"
#include "UnlockCore/Liveness/MiniFASNet.h"
#include "UnlockCore/LockScreenServices/CameraFaceScanner.h"
#include "UnlockCore/LockScreenServices/StoredPasswordTyper.h"
#include "UnlockCore/LockScreenServices/VaultAutoLocker.h"
#include "UnlockCore/LockWatching/ForeignInputIdle.h"
#include "UnlockCore/LockWatching/LockScreenActivityMonitor.h"
#include "UnlockCore/LockWatching/NotedKeyEvents.h"
#include "UnlockCore/LockWatching/OwnKeystrokes.h"
#include "UnlockCore/LockWatching/SpaceKeyMonitor.h"
#include "UnlockCore/LockWatching/WindowServerLockState.h"
#include "UnlockCore/PasswordEntry/OpenDirectoryPasswordVerifier.h"
#include "UnlockCore/PasswordEntry/TypablePassword.h"
#include "UnlockCore/Recognition/MatchStrictness.h"
#include "UnlockCore/Recognition/SFaceEmbedder.h"

#include <optional>
#include <utility>
#include <variant>

namespace marrowby {

namespace {

using Event = UnlockCoordinator::Event;

constexpr const char* openSavedReason = "open your saved face and Mac password";
constexpr const char* savePasswordReason = "save your Mac password";

std::expected<void, std::string> sentence(const std::expected<void, StorageError>& result) {
    if (result) return {};
    return std::unexpected(description(result.error()));
}

/// Why a checked password is not saved; nothing for the right one.
std::optional<std::string> refusalOf(const PasswordCheckResult& result) {
    if (std::holds_alternative<PasswordCheckResult::Correct>(result)) return std::nullopt;
    if (const auto* unavailable = std::get_if<PasswordCheckResult::Unavailable>(&result)) {
        return "The password couldn’t be checked, so nothing was saved. " +
               unavailable->explanation;
    }
    return "That isn’t your Mac password.";
}

CameraFaceScanner::LoadEmbedder embedderLoader(const ModelPack& pack,
                                               const UnlockPlatform& platform) {
    return [pack, &models = platform.models, &imaging = platform.imaging]()
               -> std::expected<std::shared_ptr<FaceEmbedder>, FaceModelError> {
        return SFaceEmbedder::load(
            pack.folder,
            {.fileName = pack.embedderFile, .modelIdentifier = pack.embedderIdentifier}, models,
            imaging);
    };
}

}  // namespace

/// The engine and the collaborators that only it uses.
struct UnlockModel::Engine {
    Engine(UnlockModel& model, UnlockPlatform& platform);

    OwnKeystrokes ownKeystrokes;
    NotedKeyEvents keyEvents;
    ForeignInputIdle inputIdle;
    CameraFaceScanner scanner;
    StoredPasswordTyper typer;
    SpaceKeyMonitor spaceKeys;
    LockScreenActivityMonitor activity;
    SystemUnlockClock clock;
    UnlockCoordinator coordinator;
    VaultAutoLocker autoLocker;
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
               .registry = model.cameraUse_},
              embedderLoader(model.resources_.models, platform),
              [pack = model.resources_.models, &models = platform.models] {
                  return MiniFASNet::load(pack.folder, models, NeuralModels::ComputeUnits::all,
                                          pack.realFaceFile);
              }),
      typer(model.credentialStore_, keyEvents, platform.queues, platform.mainThread),
      spaceKeys(platform.keyboards, ownKeystrokes),
      activity(inputIdle, platform.mainThread, platform.clock),
      clock(platform.clock, platform.mainThread),
      coordinator(model.settings_.passwordHealth,
                  {.lockState = std::make_shared<WindowServerLockState>(platform.loginSession),
                   .scanner = scanner,
                   .typer = typer,
                   .presenter = nullptr,
                   .spaceKeys = spaceKeys,
                   .activity = activity,
                   .clock = clock,
                   .readiness = [&model] { return model.readiness(); }}),
      autoLocker(
          model.vault_, [&model] { return length(model.settings_.autoLock); }, platform.mainThread,
          platform.clock) {
    coordinator.setCallbacks({.onHealthChange =
                                  [&model](const PasswordHealth& health) {
                                      model.settings_.passwordHealth = health;
                                      model.settings_.save(model.platform_.defaults);
                                  },
                              .onAskToUpdatePassword =
                                  [&model] {
                                      if (model.callbacks_.onAskToUpdatePassword)
                                          model.callbacks_.onAskToUpdatePassword();
                                  },
                              .onLog =
                                  [&model](const std::string& line) {
                                      if (model.callbacks_.onLog) model.callbacks_.onLog(line);
                                  },
                              .onChange = [&model] { model.changed(); }});
    spaceKeys.onSpace = [this] { coordinator.send(Event::SpaceKey{}); };
    activity.onActivity = [this](const InputActivity& input) {
        coordinator.send(Event::Activity{input});
    };
    scanner.preload();
    autoLocker.start();
}

struct UnlockModel::Enrollment {
    std::string name;
    std::shared_ptr<FaceEmbedder> embedder;
    Completion completion;
    CameraManager camera;
    std::unique_ptr<EnrollmentCapture> capture;
};

UnlockModel::UnlockModel(UnlockPlatform platform, Resources resources, Callbacks callbacks)
    : platform_(std::move(platform)),
      resources_(std::move(resources)),
      callbacks_(std::move(callbacks)),
      lockMonitor_(platform_.workspaceCenter, platform_.distributedCenter),
      dataFolder_(AppDataFolder::in(resources_.dataBase, resources_.testTag)),
      keyStore_(platform_.keychain,
                LoginKeychainKeyStore::vaultService(resources_.bundleIdentifier)),
      ownerCheck_(platform_.ownerAuthentication),
      vault_(keyStore_, ownerCheck_,
             [&files = platform_.files, folder = dataFolder_] {
                 return files.exists(folder.facesFile()) || files.exists(folder.passwordFile());
             },
             {.cipher = platform_.cipher,
              .mainThread = platform_.mainThread,
              .clock = platform_.clock,
              .notifications = platform_.defaultCenter}),
      faceStore_({platform_.files, dataFolder_.facesFile(), VaultPurpose::faces}, vault_,
                 platform_.cipher, platform_.clock),
      credentialStore_({platform_.files, dataFolder_.passwordFile(), VaultPurpose::password},
                       vault_),
      vaultObserver_(platform_.defaultCenter.observe(Vault::didChangeNotification,
                                                     [this] { onVaultChanged(); })),
      settings_(UnlockSettings::load(platform_.defaults)),
      self_(std::make_shared<UnlockModel*>(this)) {
    lockMonitor_.onEvent = [this](LockEvent event) { onLockEvent(event); };
    lockMonitor_.start();
}

UnlockModel::~UnlockModel() {
    platform_.defaultCenter.remove(vaultObserver_);
    lockMonitor_.stop();
}

void UnlockModel::apply(UnlockSettings settings) {
    settings_ = std::move(settings);
    settings_.save(platform_.defaults);
    if (engine_) engine_->coordinator.send(Event::SettingsChanged{});
    changed();
}

void UnlockModel::openVault(const std::string& reason, Completion completion) {
    vault_.unlock(reason, [weak = std::weak_ptr(self_), completion = std::move(completion)](
                              std::expected<void, StorageError> result) {
        const auto self = weak.lock();
        if (!self) return;
        // The notification of the change may come later than this.
        if (result && !(*self)->faceStore_.isLoaded()) result = (*self)->faceStore_.load();
        completion(sentence(result));
    });
}

void UnlockModel::enroll(std::string name, Completion completion) {
    if (enrollment_) {
        completion(std::unexpected("Your face is being captured already."));
        return;
    }
    auto embedder = embedderLoader(resources_.models, platform_)();
    if (!embedder) {
        completion(std::unexpected(description(embedder.error())));
        return;
    }
    const CameraManager::Services services{.queues = platform_.queues,
                                           .mainThread = platform_.mainThread,
                                           .clock = platform_.clock,
                                           .imaging = platform_.imaging,
                                           .registry = cameraUse_};
    enrollment_.reset(new Enrollment{
        std::move(name),
        *embedder,
        std::move(completion),
        CameraManager(platform_.enrollmentCamera, services, CameraFaceScanner::workingLongEdge),
        {}});
    enrollment_->capture = std::make_unique<EnrollmentCapture>(
        EnrollmentCapture::Services{.camera = enrollment_->camera,
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
                [this](std::vector<FaceSample> samples) { finishEnrollment(std::move(samples)); },
            .onFailed =
                [this](std::string text) { finishEnrollment(std::unexpected(std::move(text))); }});
    if (auto started = enrollment_->capture->start(settings_.builtInDisplayCameraID); !started) {
        finishEnrollment(std::unexpected(description(started.error())));
    }
}

void UnlockModel::cancelEnrollment() {
    enrollment_.reset();
}

void UnlockModel::finishEnrollment(std::expected<std::vector<FaceSample>, std::string> samples) {
    // The capture that calls this goes with the enrolment, on the next turn of the loop.
    std::shared_ptr<Enrollment> enrollment = std::move(enrollment_);
    platform_.mainThread.post(
        [weak = std::weak_ptr(self_), enrollment, samples = std::move(samples)]() mutable {
            const auto self = weak.lock();
            if (!self) return;
            if (!samples) {
                enrollment->completion(std::unexpected(samples.error()));
                return;
            }
            (*self)->openVault(
                openSavedReason, [model = *self, enrollment, samples = *std::move(samples)](
                                     const std::expected<void, std::string>& opened) {
                    if (!opened) {
                        enrollment->completion(opened);
                        return;
                    }
                    const auto saved = model->faceStore_.saveIdentity(
                        samples, enrollment->name, enrollment->embedder->modelIdentifier(),
                        enrollment->embedder->dimension());
                    model->changed();
                    enrollment->completion(sentence(saved));
                });
        });
}

void UnlockModel::savePassword(SecretBytes password, Completion completion) {
    if (const auto objection = typablepassword::objection(password.values())) {
        password.wipe();
        completion(std::unexpected(std::string(*objection)));
        return;
    }
    const auto held = std::make_shared<SecretBytes>(std::move(password));
    platform_.queues.background()->async(
        [weak = std::weak_ptr(self_), held, completion = std::move(completion),
         &directory = platform_.directory, &mainThread = platform_.mainThread,
         userName = resources_.userName] {
            const auto checked =
                OpenDirectoryPasswordVerifier(directory, userName).check(held->values());
            mainThread.post([weak, held, completion, refusal = refusalOf(checked)] {
                const auto self = weak.lock();
                if (self && !refusal) {
                    (*self)->sealPassword(held, completion);
                    return;
                }
                held->wipe();
                if (self) completion(std::unexpected(*refusal));
            });
        });
}

void UnlockModel::sealPassword(const std::shared_ptr<SecretBytes>& password,
                               Completion completion) {
    openVault(savePasswordReason, [this, password, completion = std::move(completion)](
                                      const std::expected<void, std::string>& opened) {
        if (!opened) {
            password->wipe();
            completion(opened);
            return;
        }
        const auto saved = credentialStore_.save(*password);
        if (saved) {
            settings_.passwordHealth = {};
            settings_.save(platform_.defaults);
            if (engine_) engine_->coordinator.replacePasswordHealth(settings_.passwordHealth);
        }
        changed();
        completion(sentence(saved));
    });
}

void UnlockModel::wireEngine() {
    if (!engine_) engine_ = std::make_unique<Engine>(*this, platform_);
}

UnlockReadiness UnlockModel::readiness() const {
    return {
        .isEnabled = settings_.isEnabled,
        .triggers = settings_.triggers,
        .showsUI = settings_.showsAnimation,
        .scanDuration = TimeInterval(static_cast<double>(settings_.scanSeconds)),
        .vaultUnlocked = vault_.isUnlocked(),
        .passwordSaved = credentialStore_.hasPassword(),
        .accessibilityTrusted = platform_.keyEvents.isTrusted() && platform_.keyEvents.mayPost(),
        .spaceKeyAccess = platform_.keyboards.hasListenAccess(),
        .scan = {.cameraID = settings_.builtInDisplayCameraID,
                 .identities = faceStore_.identities(),
                 .threshold = threshold(settings_.strictness),
                 .livenessMode = settings_.livenessMode}};
}

void UnlockModel::onVaultChanged() {
    if (vault_.isUnlocked()) {
        problem_.reset();
        if (const auto loaded = faceStore_.load(); !loaded) problem_ = description(loaded.error());
    }
    if (engine_) engine_->coordinator.send(Event::SettingsChanged{});
    changed();
}

void UnlockModel::onLockEvent(LockEvent event) {
    if (!engine_) return;
    engine_->coordinator.setSleeping(lockMonitor_.isSleeping());
    engine_->coordinator.send(Event::Lock{event});
}

void UnlockModel::changed() {
    if (callbacks_.onChange) callbacks_.onChange();
}

}  // namespace marrowby
