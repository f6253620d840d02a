// SPDX-License-Identifier: Apache-2.0
#include "Unlock/Model/UnlockModel.h"

#include "Unlock/Model/EngineHost.h"
#include "UnlockCore/Foundation/Phrase.h"
#include "UnlockCore/Recognition/MatchStrictness.h"

#include <tuple>
#include <utility>

namespace marrowby {

namespace {

constexpr TimeInterval pauseTolerance{1};

UnlockSettings settingsIn(DefaultsStore& defaults) {
    UnlockSettings::normaliseLivenessMode(defaults);
    return UnlockSettings::load(defaults);
}

}  // namespace

UnlockModel::UnlockModel(UnlockPlatform platform, Resources resources, Callbacks callbacks)
    : platform_(std::move(platform)),
      resources_(std::move(resources)),
      callbacks_(std::move(callbacks)),
      settings_(settingsIn(platform_.defaults)),
      isScreenLocked_(platform_.lockState.isLocked()),
      data_(platform_, AppDataFolder::in(resources_.dataBase, resources_.testTag),
            resources_.models,
            {.onVaultChange = [this](const Outcome& loaded) { vaultChanged(loaded); },
             .onLog =
                 [this](const LogLine& line) {
                     if (callbacks_.onLog) callbacks_.onLog(line);
                 },
             .autoLockLimit = [this] { return length(settings_.autoLock); }}),
      passwordCheck_(platform_),
      enrollment_(platform_, resources_.models, cameraUse_,
                  [this](const EnrollmentSession& session, const Bitmap& picture) {
                      if (callbacks_.onEnrollmentProgress)
                          callbacks_.onEnrollmentProgress(session, picture);
                  }) {
    platform_.keyEvents.vouchFor(settings_.vouchedLockers);
    platform_.keyEvents.setUnknownLockerHandler(
        [offer = weakSelf_.guarded(&UnlockModel::offerLocker), &mainThread = platform_.mainThread](
            const std::string& path) { mainThread.post([offer, path] { offer(path); }); });
    state_ = currentState();
    platform_.lockEvents.onEvent = [this](LockEvent event) { lockChanged(event); };
    platform_.lockEvents.start();
    if (platform_.sessionUnlocking != nullptr) {
        platform_.sessionUnlocking->onChange = [this] {
            wireEngine();
            publish();
        };
    }
}

UnlockModel::~UnlockModel() {
    if (platform_.sessionUnlocking != nullptr) platform_.sessionUnlocking->onChange = {};
    platform_.lockEvents.stop();
    platform_.lockEvents.onEvent = {};
    platform_.keyEvents.setUnknownLockerHandler({});
}

UnlockStatusFacts UnlockModel::statusFacts() const {
    // A damaged face is saved, too.
    return {.faceSaved = state_.isEnrolled || state_.fault == SavedDataFault::faceDamaged,
            .passwordSaved = state_.hasPassword,
            .passwordNeedsUpdate = settings().passwordHealth.suspended,
            .isEnabled = settings().isEnabled,
            .camera = state_.cameraPermission,
            .accessibilityAllowed = state_.accessibilityTrusted,
            .touchIDDone = state_.vaultUnlocked,
            .modelsChanged = state_.modelsChanged,
            .isPaused = state_.isPaused,
            .fault = state_.fault,
            .hasCamera = state_.hasCamera,
            .hasSeenLocker = state_.hasSeenLocker,
            .untypedLocker = settings().untypedLocker,
            .opening = state_.opening,
            .asksDesktop = settings().asksDesktop};
}

bool UnlockModel::isOpeningSetUp() const {
    switch (platform_.opening()) {
        case LockOpening::typing:
            return data_.hasPassword();
        case LockOpening::asking:
            return settings().asksDesktop;
        case LockOpening::forbidden:
        case LockOpening::unsupported:
            break;
    }
    return false;
}

bool UnlockModel::isReady() const {
    return state_.isEnrolled && isOpeningSetUp() && state_.accessibilityTrusted &&
           state_.cameraPermission == CameraManager::Permission::granted;
}

std::vector<CameraDevice> UnlockModel::cameras() const {
    return CameraManager::availableCameras(*platform_.enrollmentCamera);
}

void UnlockModel::requestCameraAccess() {
    enrollment_.camera().requestAccess(
        weakSelf_.guarded([](UnlockModel& self, bool /*granted*/) { self.publish(); }));
}

void UnlockModel::requestSpaceKeyAccess() {
    if (!platform_.spaceKeys.hasListenAccess()) platform_.spaceKeys.requestListenAccess();
}

void UnlockModel::forgetProblem() {
    show({});
}

void UnlockModel::apply(UnlockSettings settings) {
    const bool isSwitchedOff = settings_.isEnabled && !settings.isEnabled;
    const bool isSpaceNew = settings.triggers.contains(UnlockTrigger::onSpace) &&
                            !settings_.triggers.contains(UnlockTrigger::onSpace);
    store(std::move(settings));
    if (isSwitchedOff) data_.lock();
    if (isSpaceNew) requestSpaceKeyAccess();
    publish();
}

void UnlockModel::openVault(Completion completion) {
    change([] { return Outcome(); }, std::move(completion));
}

void UnlockModel::captureFace(Completion completion) {
    endTryOut(translated("A face is being captured, which ended the trial."));
    enrollment_.capture(settings().cameraChoice().cameraID(platform_.windowServer.activeDisplays()),
                        showing(std::move(completion)));
}

void UnlockModel::saveCapturedFace(const std::string& name, std::optional<UUID> replacing,
                                   Completion completion) {
    change([this, name, replacing] { return saveCaptured(name, replacing); },
           std::move(completion));
}

void UnlockModel::renameFace(UUID id, const std::string& name, Completion completion) {
    change([this, id, name] { return data_.renameFace(id, name); }, std::move(completion));
}

void UnlockModel::setFaceEnabled(UUID id, bool enabled, Completion completion) {
    change([this, id, enabled] { return data_.setFaceEnabled(id, enabled); },
           std::move(completion));
}

void UnlockModel::removeFace(UUID id, Completion completion) {
    change([this, id] { return data_.removeFace(id); }, std::move(completion));
}

void UnlockModel::savePassword(SecretBytes password, Completion completion) {
    saveChecked(
        std::move(password), ProtectedData::Purpose::savePassword, [] { return Outcome(); },
        std::move(completion));
}

void UnlockModel::saveCapturedFaceAndPassword(const std::string& name, SecretBytes password,
                                              Completion completion) {
    saveChecked(
        std::move(password), ProtectedData::Purpose::saveFaceAndPassword,
        [this, name] { return saveCaptured(name, std::nullopt); }, std::move(completion));
}

void UnlockModel::change(std::function<Outcome()> work, Completion completion) {
    data_.open(ProtectedData::Purpose::showOrChange,
               [work = std::move(work), completion = showing(std::move(completion))](
                   const Outcome& opened) { completion(opened ? work() : opened); });
}

void UnlockModel::saveChecked(SecretBytes password, ProtectedData::Purpose purpose,
                              std::function<Outcome()> rest, Completion completion) {
    passwordCheck_.check(std::move(password), [this, purpose, rest = std::move(rest),
                                               completion = showing(std::move(completion))](
                                                  const PasswordCheck::Result& checked) {
        if (!checked) return completion(std::unexpected(checked.error()));
        data_.open(purpose, [this, rest, held = *checked, completion](const Outcome& opened) {
            const Outcome saved = opened ? data_.savePassword(*held) : opened;
            held->wipe();
            if (!saved) return completion(saved);
            UnlockSettings settings = settings_;
            settings.passwordHealth = {};
            store(std::move(settings));
            if (engine_) engine_->trustPassword();
            completion(rest());
        });
    });
}

void UnlockModel::allowAsking(const std::string& name, Completion completion) {
    change(
        [this, name] {
            const Outcome saved = hasCapturedFace() ? saveCaptured(name, std::nullopt) : Outcome();
            if (!saved) return saved;
            UnlockSettings settings = settings_;
            settings.asksDesktop = true;
            store(std::move(settings));
            return saved;
        },
        std::move(completion));
}

Outcome UnlockModel::saveCaptured(const std::string& name, std::optional<UUID> replacing) {
    const CapturedFace* const face = enrollment_.captured();
    if (face == nullptr) return std::unexpected(translated("There is no captured face to save."));
    const Outcome saved = data_.saveFace(*face, name, replacing);
    if (saved) enrollment_.drop();
    return saved;
}

void UnlockModel::eraseEverything() {
    enrollment_.drop();
    endTrial(std::unexpected(translated("Everything was erased, which ended this look.")));
    endTryOut(translated("Everything was erased, which ended the trial."));
    pause_.reset();
    const Outcome erased = data_.eraseEverything();
    // Where something is left, its settings still hold.
    if (erased) {
        store({});
        std::ignore = platform_.systemSettings.setOpensAtLogin(false);
    }
    if (engine_) {
        engine_->stopTyping();
        engine_->trustPassword();
    }
    show(erased);
}

void UnlockModel::pause(std::optional<TimeInterval> atMost) {
    pause_.emplace();
    if (atMost) {
        pause_->end = platform_.mainThread.at(platform_.clock.now() + *atMost, pauseTolerance,
                                              weakSelf_.guarded(&UnlockModel::resume));
    }
    if (callbacks_.onLog) callbacks_.onLog({.sentence = Phrase("Paused")});
    publish();
}

void UnlockModel::resume() {
    if (!pause_) return;
    // Kept alive: its timer may be the caller.
    platform_.mainThread.post(
        [end = std::shared_ptr<MainThread::Timer>(std::move(pause_->end))] {});
    pause_.reset();
    if (callbacks_.onLog) callbacks_.onLog({.sentence = Phrase("Resumed")});
    publish();
}

std::optional<std::string> UnlockModel::reasonNotToLook() const {
    if (!std::holds_alternative<std::monostate>(ownLook_))
        return translated("A look is under way.");
    if (enrollment_.isCapturing()) return translated("A face is being captured.");
    if (platform_.lockState.isLocked())
        return translated("The screen is locked: it looks for you by itself.");
    // Off, paused or without a locker, it looks when it is asked to.
    UnlockStatusFacts facts = statusFacts();
    facts.isEnabled = true;
    facts.isPaused = false;
    facts.hasSeenLocker = true;
    facts.untypedLocker.reset();
    const auto status = UnlockStatus::of(facts);
    if (!status.isReady()) return translated("{status}.", {{"status", status.title(words())}});
    return std::nullopt;
}

void UnlockModel::tryLook(LookEnd onEnd) {
    wireEngine();
    endTryOut(translated("Another look began, which ended the trial."));
    if (const auto reason = reasonNotToLook()) return onEnd(std::unexpected(*reason));
    auto& trial = ownLook_.emplace<Trial>(Trial{
        .onEnd = std::move(onEnd),
        .look =
            std::make_unique<TrialLook>(TrialLook::Services{.scanner = engine_->scanner(),
                                                            .mainThread = platform_.mainThread,
                                                            .clock = platform_.clock,
                                                            .windowServer = platform_.windowServer},
                                        readiness(), weakSelf_.guarded(&UnlockModel::endTrial))});
    trial.look->start();
}

void UnlockModel::endTrial(const std::expected<TrialLook::Result, std::string>& result) {
    if (!std::holds_alternative<Trial>(ownLook_)) return;
    // The callback may start another.
    const auto ended = std::exchange(ownLook_, std::monostate());
    std::get<Trial>(ended).onEnd(result);
}

void UnlockModel::startTryOut(TryOutCallbacks callbacks) {
    wireEngine();
    if (const auto reason = reasonNotToLook()) return callbacks.onEnd(*reason);
    auto& trying = ownLook_.emplace<Trying>(Trying{
        .onEnd = std::move(callbacks.onEnd),
        .tryOut =
            std::make_unique<TryOut>(TryOut::Services{.scanner = engine_->scanner(),
                                                      .mainThread = platform_.mainThread,
                                                      .clock = platform_.clock,
                                                      .windowServer = platform_.windowServer,
                                                      .readiness = [this] { return readiness(); }},
                                     std::move(callbacks.onChange))});
    trying.tryOut->start();
}

void UnlockModel::endTryOut(const std::string& reason) {
    if (!std::holds_alternative<Trying>(ownLook_)) return;
    const auto ended = std::exchange(ownLook_, std::monostate());
    if (!reason.empty()) std::get<Trying>(ended).onEnd(reason);
}

void UnlockModel::wireEngine() {
    if (engine_ || !state_.isEnrolled || !isOpeningSetUp()) return;
    engine_ = std::make_unique<EngineHost>(
        EngineHost::Services{.platform = platform_,
                             .models = resources_.models,
                             .credentials = data_.credentials(),
                             .cameraUse = cameraUse_,
                             .readiness = [this] { return readiness(); }},
        settings().passwordHealth,
        UnlockCoordinator::Callbacks{.onHealthChange =
                                         [this](const PasswordHealth& health) {
                                             UnlockSettings settings = settings_;
                                             settings.passwordHealth = health;
                                             store(std::move(settings));
                                             publish();
                                         },
                                     .onAskToUpdatePassword = callbacks_.onAskToUpdatePassword,
                                     .onLog = callbacks_.onLog,
                                     .onChange = {}});
}

UnlockReadiness UnlockModel::readiness() const {
    return {.isEnabled = settings().isEnabled && !pause_,
            .triggers = settings().triggers,
            .showsUI = settings().showsAnimation,
            .scanDuration = TimeInterval(static_cast<double>(settings().scanSeconds)),
            .vaultUnlocked = data_.isOpen(),
            .opening = platform_.opening(),
            .passwordSaved = isOpeningSetUp(),
            .accessibilityTrusted = platform_.mayOpen(),
            .spaceKeyAccess = platform_.spaceKeys.hasListenAccess(),
            .camera = settings().cameraChoice(),
            .scan = {.cameraID = {},
                     .identities = data_.comparableFaces(),
                     .threshold = threshold(settings().strictness),
                     .livenessMode = settings().livenessMode}};
}

void UnlockModel::vaultChanged(const Outcome& loaded) {
    if (data_.isOpen()) {
        show(loaded);
    } else {
        endTryOut(translated("What is saved was locked, which ended the trial."));
        publish();
    }
}

void UnlockModel::lockChanged(LockEvent event) {
    // The scans need the camera.
    if (event == LockEvent::screenLocked) {
        noteLocker();
        enrollment_.interrupt(translated("The screen was locked, so nothing was captured."));
        endTrial(std::unexpected(translated("The screen was locked, which ended this look.")));
        endTryOut(translated("The screen was locked, which ended the trial."));
        isScreenLocked_ = true;
    }
    if (event == LockEvent::screenUnlocked) isScreenLocked_ = false;
    if (engine_) engine_->follow(event);
    // Nothing that is published changes with the displays’ sleep.
    if (event == LockEvent::screenLocked || event == LockEvent::screenUnlocked) publish();
}

void UnlockModel::noteLocker() {
    UnlockSettings settings = settings_;
    settings.hasSeenLocker = true;
    settings.untypedLocker.reset();
    if (const auto name = platform_.lockEvents.locker().untyped; !name.empty())
        settings.untypedLocker = name;
    if (settings != settings_) store(std::move(settings));
}

Completion UnlockModel::showing(Completion completion) {
    return [this, completion = std::move(completion)](const Outcome& outcome) {
        show(outcome);
        completion(outcome);
    };
}

void UnlockModel::show(const Outcome& outcome) {
    problem_.reset();
    if (!outcome) problem_ = outcome.error();
    publish();
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

std::optional<std::string> UnlockModel::currentProblem() const {
    if (problem_) return problem_;
    if (const Phrase problem = platform_.lockEvents.problem(); !problem.empty())
        return translated(problem);
    return platform_.defaults.problem();
}

UnlockModel::State UnlockModel::currentState() const {
    return State{
        .isEnrolled = data_.isEnrolled(),
        .hasPassword = data_.hasPassword(),
        .vaultUnlocked = data_.isOpen(),
        .identities = data_.faces(),
        .cameraPermission = enrollment_.camera().permission(),
        .opening = platform_.opening(),
        .accessibilityTrusted = platform_.mayOpen(),
        .maySpaceKeyBeHeard = platform_.spaceKeys.hasListenAccess(),
        .hasCamera = !cameras().empty(),
        .isScreenLocked = isScreenLocked_,
        .hasSeenLocker = settings_.hasSeenLocker || platform_.lockEvents.locker().isPresent,
        .fault = data_.fault(),
        .modelsChanged = data_.haveModelsChanged(),
        .isPaused = pause_.has_value(),
        .problem = currentProblem(),
        .settings = settings_};
}

void UnlockModel::publish() {
    State state = currentState();
    if (state == state_) return;
    state_ = std::move(state);
    if (engine_) engine_->readinessChanged();
    if (callbacks_.onChange) callbacks_.onChange();
}

}  // namespace marrowby
