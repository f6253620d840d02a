// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Unlock/Model/UnlockJournal.h"
#include "Unlock/Model/UnlockModel.h"
#include "Unlock/Pages/WindowPresenter.h"
#include "UnlockCore/Foundation/UUID.h"
#include "UnlockCore/Foundation/WeakSelf.h"
#include "UnlockCore/Platform/SystemClock.h"
#include "UnlockCore/Status/UnlockOnboardingFlow.h"

#include <functional>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace marrowby {

/// The settings window. Main thread; the references outlive it.
class SettingsPresenter final : public WindowPresenter {
  public:
    struct Hooks {
        std::function<void()> onChange;
        /// `replacing`: the face to capture anew.
        std::function<void(UnlockOnboardingMode, std::optional<UUID> replacing)> onOnboarding;
        std::function<void()> onQuit;
    };

    SettingsPresenter(UnlockModel& model, SystemSettings& settings, const UnlockJournal& journal,
                      const SystemClock& clock, Hooks hooks);

    [[nodiscard]] WindowPage page() const override;
    void press(ControlID id) override;
    void toggle(ControlID id, bool isOn) override;
    void choose(ControlID id, std::size_t option) override;
    void enter(ControlID id, std::string text) override;
    void enter(ControlID /*id*/, SecretBytes /*secret*/) override {}
    void windowClosed() override;

  private:
    struct Nothing {};
    struct Erasing {};
    struct Quitting {};
    struct RemovingFace {
        UUID id;
        std::string name;
    };
    struct RenamingFace {
        UUID id;
        std::string oldName;
        std::string name;
    };
    struct Trying {
        TryOut::View view;
    };
    /// What is shown in place of the settings: a question, or the trial.
    using Sheet = std::variant<Nothing, Erasing, Quitting, RemovingFace, RenamingFace, Trying>;

    [[nodiscard]] WindowPage questionPage() const;
    void addLooking(std::vector<WindowRow>& rows) const;
    void addSaved(std::vector<WindowRow>& rows) const;
    void addActivity(std::vector<WindowRow>& rows) const;
    void applyFix();
    void openVault();
    void confirm();
    void tryIt();
    /// Back to the settings.
    void leaveSheet();
    void open(SystemSettings::Pane pane);
    void change(const std::function<void(UnlockSettings&)>& edit);

    UnlockModel& model_;
    SystemSettings& systemSettings_;
    const UnlockJournal& journal_;
    const SystemClock& clock_;
    Hooks hooks_;
    Sheet sheet_;
    /// Why the system's settings could not be opened, or the trial ended.
    std::string advice_;
    WeakSelf<SettingsPresenter> weakSelf_{this};
};

}  // namespace marrowby
