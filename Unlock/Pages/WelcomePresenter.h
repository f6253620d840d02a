#pragma once

#include "Unlock/Model/UnlockModel.h"
#include "Unlock/Pages/WindowPresenter.h"
#include "UnlockCore/Enrollment/EnrollmentSession.h"
#include "UnlockCore/Foundation/SecretBytes.h"
#include "UnlockCore/Status/UnlockOnboardingFlow.h"

#include <expected>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace marrowby {

/// The welcome window: leads through one onboarding flow. Main thread; what it is made of outlives
/// it.
class WelcomePresenter final : public WindowPresenter {
  public:
    struct Hooks {
        /// The page is another than before.
        std::function<void()> onChange;
        /// The last step was confirmed: the window is to go.
        std::function<void()> onFinish;
    };

    WelcomePresenter(UnlockOnboardingMode mode, UnlockModel& model, SystemSettings& settings,
                     Hooks hooks);

    /// Begins what the step shown needs.
    void windowShown();
    void modelChanged();
    void captureProgressed(const EnrollmentSession& session);

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
    /// The step's own title, words and rows.
    [[nodiscard]] WindowPage body() const;
    void describeCapture(WindowPage& page) const;
    void describePassword(WindowPage& page) const;

    void goBack();
    void goForward();
    void savePassword();
    void moveOn();
    /// Waits for `work`; moves on when it succeeded.
    void save(const std::function<void(UnlockModel::Completion)>& work);
    void capture();
    void finish();

    UnlockModel& model_;
    SystemSettings& systemSettings_;
    Hooks hooks_;
    UnlockOnboardingFlow flow_;
    bool understood_ = false;
    bool passwordSaved_ = false;
    std::string name_;
    UnlockTriggers triggers_;
    std::optional<SecretBytes> secret_;
    std::optional<windowrow::Guide> guide_;
    /// While something is being saved.
    bool isBusy_ = false;
    std::string problem_;
    /// What completions hold weakly.
    std::shared_ptr<WelcomePresenter*> self_;
};

}  // namespace marrowby
