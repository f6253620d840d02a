// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Unlock/ApplicationWindows.h"
#include "Unlock/CommandResponder.h"
#include "Unlock/Model/OwnerReminder.h"
#include "Unlock/Model/UnlockJournal.h"
#include "Unlock/Model/UnlockModel.h"
#include "Unlock/Model/UnlockNotice.h"
#include "Unlock/Pages/SettingsPresenter.h"
#include "Unlock/Pages/WelcomePresenter.h"
#include "Unlock/UnlockOpening.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace marrowby {

/// The application without its drawing: the model, the windows' content, and when they open. Main
/// thread.
class UnlockApplication {
  public:
    struct Hooks {
        /// Writes to the system's log, without names. Lines contain no secrets.
        std::function<void(const LogLine&)> log;
        /// Ends the process after this call has returned.
        std::function<void()> terminate;
    };

    UnlockApplication(const UnlockPlatform& platform, UnlockModel::Resources resources,
                      ApplicationWindows& windows, Hooks hooks);
    ~UnlockApplication();
    UnlockApplication(const UnlockApplication&) = delete;
    UnlockApplication& operator=(const UnlockApplication&) = delete;

    void didFinishLaunching(const UnlockOpening::Launch& launch);
    void shouldHandleReopen();
    [[nodiscard]] static bool shouldTerminateAfterLastWindowClosed() { return false; }
    void carryOut(const Command& command, CommandAnswer answer);
    /// Wipes the key and cancels all pending work.
    void willTerminate();

    [[nodiscard]] UnlockModel& model() { return *model_; }

  private:
    /// On a later turn.
    void open(UnlockOpening::Window window);
    void show(UnlockOpening::Window window);
    void startWelcome(UnlockOnboardingMode mode, std::optional<UUID> replacing = {});
    void modelChanged();
    /// Outside the windows.
    void showStatus();
    void carryOut(StatusItem::Command command);
    void watchPermissions();
    [[nodiscard]] UnlockOpening::State openingState() const;

    UnlockPlatform platform_;
    ApplicationWindows& windows_;
    Hooks hooks_;
    UnlockJournal journal_;
    std::unique_ptr<UnlockModel> model_;
    std::unique_ptr<WelcomePresenter> welcome_;
    std::unique_ptr<SettingsPresenter> settings_;
    std::unique_ptr<CommandResponder> commands_;
    /// Null unless opened at login.
    std::unique_ptr<OwnerReminder> reminder_;
    /// Null where the island tells.
    std::unique_ptr<UnlockNotice> unlockNotice_;
    /// Polls the permissions while a window shows them: their changes are not announced.
    std::unique_ptr<MainThread::Timer> permissionTimer_;
    std::unique_ptr<MainThread::Timer> opening_;
};

}  // namespace marrowby
