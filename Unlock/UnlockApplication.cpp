// SPDX-License-Identifier: Apache-2.0
#include "Unlock/UnlockApplication.h"

#include "UnlockCore/Foundation/Phrase.h"

#include <utility>

namespace marrowby {

namespace {

using Window = UnlockOpening::Window;

constexpr TimeInterval welcomeDelay{0.6};
constexpr TimeInterval settingsDelay{0.4};
constexpr TimeInterval permissionInterval{1};

}  // namespace

UnlockApplication::UnlockApplication(const UnlockPlatform& platform,
                                     UnlockModel::Resources resources, ApplicationWindows& windows,
                                     Hooks hooks)
    : platform_(platform),
      windows_(windows),
      hooks_(std::move(hooks)),
      model_(std::make_unique<UnlockModel>(
          platform, std::move(resources),
          UnlockModel::Callbacks{
              .onChange = [this] { modelChanged(); },
              .onLog =
                  [this](const LogLine& line) {
                      if (hooks_.log) hooks_.log(line);
                      if (unlockNotice_) unlockNotice_->note(line);
                      if (line.level == LogLine::Level::debug) return;
                      journal_.add(line, platform_.clock.now());
                      windows_.refresh(Window::settings);
                  },
              .onAskToUpdatePassword =
                  [this] {
                      // Reopening would lose its unsaved input. The settings
                      // ask, too.
                      if (!windows_.isOpen(Window::welcome))
                          startWelcome(UnlockOnboardingMode::updatePassword);
                  },
              .onEnrollmentProgress =
                  [this](const EnrollmentSession& session, const Bitmap& picture) {
                      if (welcome_) welcome_->captureProgressed(session, picture);
                  }})),
      settings_(std::make_unique<SettingsPresenter>(
          *model_, platform_.systemSettings, journal_, platform_.clock,
          SettingsPresenter::Hooks{
              .onChange = [this] { windows_.refresh(Window::settings); },
              .onOnboarding = [this](
                                  UnlockOnboardingMode mode,
                                  std::optional<UUID> replacing) { startWelcome(mode, replacing); },
              .onQuit =
                  [this] {
                      if (hooks_.terminate) hooks_.terminate();
                  }})),
      commands_(std::make_unique<CommandResponder>(
          *model_, platform_.systemSettings,
          CommandResponder::Hooks{.showSettings = [this] { open(Window::settings); },
                                  .quit =
                                      [this] {
                                          if (hooks_.terminate) hooks_.terminate();
                                      }})) {
    if (platform_.unlockNotices != nullptr && platform_.sessionUnlocking != nullptr)
        unlockNotice_ =
            std::make_unique<UnlockNotice>(*platform_.unlockNotices, *platform_.sessionUnlocking);
    model_->wireEngine();
}

UnlockApplication::~UnlockApplication() {
    willTerminate();
}

void UnlockApplication::didFinishLaunching(const UnlockOpening::Launch& launch) {
    if (hooks_.log)
        hooks_.log({.sentence = Phrase("Models: {what}"),
                    .what = model_->models().knownAs(),
                    .detail = model_->models().name});
    if (const auto window = UnlockOpening::onLaunch(openingState(), launch)) open(*window);
    if (platform_.statusItem != nullptr)
        platform_.statusItem->onCommand = [this](StatusItem::Command command) {
            carryOut(command);
        };
    if (platform_.notices != nullptr && launch.isAtLogin)
        reminder_ = std::make_unique<OwnerReminder>(*platform_.notices, platform_.words, [this] {
            model_->openVault([](const auto& /*the model's problem*/) {});
        });
    showStatus();
}

void UnlockApplication::shouldHandleReopen() {
    if (!model_) return;
    model_->refresh();
    open(UnlockOpening::onReopen(openingState()));
}

void UnlockApplication::carryOut(const Command& command, CommandAnswer answer) {
    if (commands_) commands_->carryOut(command, std::move(answer));
}

void UnlockApplication::willTerminate() {
    permissionTimer_.reset();
    opening_.reset();
    reminder_.reset();
    unlockNotice_.reset();
    if (platform_.statusItem != nullptr) platform_.statusItem->onCommand = {};
    windows_.close(Window::welcome);
    windows_.close(Window::settings);
    commands_.reset();
    welcome_.reset();
    settings_.reset();
    model_.reset();
}

void UnlockApplication::open(Window window) {
    const TimeInterval delay = window == Window::welcome ? welcomeDelay : settingsDelay;
    opening_ = platform_.mainThread.at(platform_.clock.now() + delay, TimeInterval(0.05),
                                       [this, window] { show(window); });
}

void UnlockApplication::show(Window window) {
    if (window == Window::welcome && !windows_.isOpen(Window::welcome)) {
        startWelcome(UnlockOnboardingMode::setUp);
        return;
    }
    if (window == Window::welcome) {
        windows_.show(Window::welcome, *welcome_);
    } else {
        windows_.show(Window::settings, *settings_);
    }
    watchPermissions();
}

void UnlockApplication::startWelcome(UnlockOnboardingMode mode, std::optional<UUID> replacing) {
    if (welcome_) {
        windows_.close(Window::welcome);
        welcome_->windowClosed();
    }
    // Kept alive until the next turn: the presenter may be the caller.
    const auto previous = std::shared_ptr<WelcomePresenter>(std::move(welcome_));
    platform_.mainThread.post([previous] {});
    welcome_ = std::make_unique<WelcomePresenter>(
        mode, replacing, *model_, platform_.systemSettings,
        WelcomePresenter::Hooks{.onChange = [this] { windows_.refresh(Window::welcome); },
                                .onFinish = [this] { windows_.close(Window::welcome); },
                                .onSettings =
                                    [this] {
                                        windows_.close(Window::welcome);
                                        open(Window::settings);
                                    }});
    windows_.show(Window::welcome, *welcome_);
    welcome_->windowShown();
    windows_.refresh(Window::welcome);
    watchPermissions();
}

void UnlockApplication::modelChanged() {
    if (welcome_ && windows_.isOpen(Window::welcome)) welcome_->modelChanged();
    windows_.refresh(Window::welcome);
    windows_.refresh(Window::settings);
    showStatus();
}

void UnlockApplication::showStatus() {
    const UnlockStatus status = model_->status();
    const UnlockModel::State& state = model_->state();
    if (platform_.statusItem != nullptr)
        platform_.statusItem->show(
            {.status = status.title(platform_.words), .isPaused = state.isPaused});
    if (reminder_)
        reminder_->update(
            {.isCheckMissing = std::holds_alternative<UnlockStatus::NeedsTouchID>(status),
             .isCheckPassed = state.vaultUnlocked,
             .isScreenLocked = state.isScreenLocked});
    if (unlockNotice_) unlockNotice_->update(state.isScreenLocked);
}

void UnlockApplication::carryOut(StatusItem::Command command) {
    switch (command) {
        case StatusItem::Command::settings:
            return open(Window::settings);
        case StatusItem::Command::pause:
            return model_->pause(std::nullopt);
        case StatusItem::Command::resume:
            return model_->resume();
        case StatusItem::Command::quit:
            if (hooks_.terminate) hooks_.terminate();
            return;
    }
}

void UnlockApplication::watchPermissions() {
    permissionTimer_ =
        platform_.mainThread.every(permissionInterval, permissionInterval / 4, [this] {
            if (windows_.isOpen(Window::welcome) || windows_.isOpen(Window::settings)) {
                model_->refresh();
                windows_.refresh(Window::settings);
                return;
            }
            platform_.mainThread.post(
                [timer = std::shared_ptr<MainThread::Timer>(std::move(permissionTimer_))] {});
        });
}

UnlockOpening::State UnlockApplication::openingState() const {
    return {.isReady = model_->isReady(),
            .finishedWelcome = model_->settings().hasFinishedWelcome,
            .welcomeOpen = windows_.isOpen(Window::welcome),
            .settingsOpen = windows_.isOpen(Window::settings)};
}

}  // namespace marrowby
