// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Unlock/Model/Outcome.h"
#include "Unlock/Model/UnlockModel.h"
#include "Unlock/Pages/WindowPresenter.h"
#include "UnlockCore/Enrollment/EnrollmentSession.h"
#include "UnlockCore/Foundation/SecretBytes.h"
#include "UnlockCore/Foundation/WeakSelf.h"
#include "UnlockCore/Status/UnlockOnboardingFlow.h"

#include <functional>
#include <optional>
#include <string>

namespace marrowby {

/// The welcome window: one onboarding flow. Main thread; the references outlive it.
class WelcomePresenter final : public WindowPresenter {
  public:
    struct Hooks {
        /// The page has changed.
        std::function<void()> onChange;
        /// The last step was confirmed: close the window.
        std::function<void()> onFinish;
        /// Show the settings instead.
        std::function<void()> onSettings;
    };

    /// `replacing`: the saved face that an added look takes the place of, once it is saved.
    WelcomePresenter(UnlockOnboardingMode mode, std::optional<UUID> replacing, UnlockModel& model,
                     SystemSettings& settings, Hooks hooks);

    /// Starts the capture if the step needs one.
    void windowShown();
    void modelChanged();
    void captureProgressed(const EnrollmentSession& session, const Bitmap& picture);

    [[nodiscard]] WindowPage page() const override;
    void press(ControlID id) override;
    void toggle(ControlID id, bool isOn) override;
    void choose(ControlID /*id*/, std::size_t /*option*/) override {}
    void enter(ControlID id, std::string text) override;
    void enter(ControlID id, SecretBytes secret) override;
    void windowClosed() override;

  private:
    using Step = UnlockOnboardingStep;

    [[nodiscard]] UnlockOnboardingFacts facts() const;
    /// Without the buttons.
    [[nodiscard]] WindowPage body() const;
    void describeCapture(WindowPage& page) const;
    void describePassword(WindowPage& page) const;
    void describeClosed(WindowPage& page) const;
    [[nodiscard]] windowrow::Text aboutWhatIsKept() const;

    void goBack();
    void goForward();
    void savePassword();
    void saveConsent();
    void moveOn();
    /// Moves on when `work` has succeeded.
    void save(const std::function<void(Completion)>& work);
    void capture();
    void finish();

    UnlockModel& model_;
    SystemSettings& systemSettings_;
    Hooks hooks_;
    UnlockOnboardingFlow flow_;
    const std::optional<UUID> replacing_;
    bool understood_ = false;
    bool passwordSaved_ = false;
    /// The user said yes to having the desktop open the lock.
    bool consents_;
    bool consentSaved_ = false;
    std::string name_;
    UnlockTriggers triggers_;
    bool opensAtLogin_;
    std::optional<SecretBytes> secret_;
    std::optional<windowrow::Guide> guide_;
    /// While something is being saved.
    bool isBusy_ = false;
    std::string problem_;
    WeakSelf<WelcomePresenter> weakSelf_{this};
};

}  // namespace marrowby
