// SPDX-License-Identifier: Apache-2.0
#include "Unlock/Pages/WelcomePresenter.h"

#include "UnlockCore/Foundation/Phrase.h"
#include "UnlockCore/Storage/StorageError.h"

#include <algorithm>
#include <tuple>
#include <utility>

namespace marrowby {

namespace {

using Row = WindowRow;
using Control = WindowControl;

WindowButton button(Control control, std::string title) {
    return {.id = {control}, .title = std::move(title)};
}

}  // namespace

WelcomePresenter::WelcomePresenter(UnlockOnboardingMode mode, std::optional<UUID> replacing,
                                   UnlockModel& model, SystemSettings& settings, Hooks hooks)
    : model_(model),
      systemSettings_(settings),
      hooks_(std::move(hooks)),
      flow_(mode, model.state().opening),
      replacing_(replacing),
      consents_(model.settings().asksDesktop),
      triggers_(model.settings().triggers),
      opensAtLogin_(!model.settings().hasFinishedWelcome || settings.opensAtLogin()) {
    const auto& faces = model.state().identities;
    if (mode == UnlockOnboardingMode::setUp && !faces.empty()) name_ = faces.front().name;
    const auto old = std::ranges::find(
        faces, replacing, [](const FaceIdentity& face) { return std::optional(face.id); });
    if (replacing && old != faces.end()) name_ = old->name;
}

UnlockOnboardingFacts WelcomePresenter::facts() const {
    const UnlockModel::State& state = model_.state();
    // A face saved earlier has its name already.
    const bool isSaved = flow_.mode() == UnlockOnboardingMode::setUp && state.isEnrolled;
    return {.understood = understood_,
            .cameraAllowed =
                state.cameraPermission == CameraManager::Permission::granted && state.hasCamera,
            .accessibilityAllowed = state.accessibilityTrusted,
            .enrolmentComplete = model_.hasCapturedFace() || isSaved,
            .name = isSaved && !model_.hasCapturedFace() ? "saved" : name_,
            .passwordSaved = passwordSaved_,
            .consentSaved = consentSaved_,
            .triggers = triggers_};
}

WindowPage WelcomePresenter::page() const {
    WindowPage page = body();
    page.problem = problem_;
    if (isClosed(model_.state().opening) && flow_.mode() == UnlockOnboardingMode::setUp)
        return page;
    if (flow_.canGoBack()) {
        WindowButton back = button(Control::goBack, translated("Back"));
        back.isEnabled = !isBusy_;
        page.buttons.push_back(std::move(back));
    }
    WindowButton forward = button(Control::goForward, translated("Continue"));
    forward.isDefault = true;
    // The password is checked on Continue, not while it is typed.
    const bool isSavedByIt =
        flow_.step() == Step::password || (flow_.step() == Step::consent && consents_);
    forward.isEnabled = !isBusy_ && (isSavedByIt || flow_.canGoForward(facts()));
    if (flow_.isLastStep())
        forward.title = flow_.step() == Step::done ? translated("Done") : translated("Save");
    page.buttons.push_back(std::move(forward));
    return page;
}

WindowPage WelcomePresenter::body() const {
    const UnlockModel::State& state = model_.state();
    const PlatformWords& words = model_.words();
    const bool isTyped = state.opening == LockOpening::typing;
    WindowPage page;
    switch (flow_.step()) {
        case Step::welcome:
            page.title = translated("Welcome to Marrowby Unlock");
            if (isClosed(state.opening)) {
                describeClosed(page);
                break;
            }
            page.detail = isTyped
                              ? translated(
                                    "When you come back to your locked {computer}, it looks for "
                                    "you for a few seconds and types your password when it’s you.",
                                    {{"computer", words.computer}})
                              : translated(
                                    "When you come back to your locked {computer}, it looks for "
                                    "you for a few seconds and has the desktop unlock when it’s "
                                    "you.",
                                    {{"computer", words.computer}});
            page.rows = {Row::Text{
                isTyped
                    ? translated(
                          "Setting it up takes about two minutes: two permissions, your face from "
                          "nine sides, and your password.")
                    : translated(
                          "Setting it up takes about two minutes: the camera, your face from nine "
                          "sides, and your yes.")}};
            break;
        case Step::security:
            page.title = translated("What it keeps, and how safe it is");
            page.rows = {
                aboutWhatIsKept(),
                Row::Text{translated(
                    "A camera sees less than {finger} feels. Most photos and screens are turned "
                    "away, but a cut-out mask, a large screen, or somebody who looks very much "
                    "like you may get in; strict mode in the settings is harder to fool. It never "
                    "works right after a restart.",
                    {{"finger", words.ownerCheck.finger}})},
                isTyped
                    ? Row::Text{translated(
                          "It keeps other people out, not programs: whatever program you run may "
                          "read the key from your {keyStore} and the password from its file, "
                          "without your face and without a question. Run only what you would "
                          "trust with your password.",
                          {{"keyStore", words.keyStore.inSentence}})}
                    : Row::Text{translated(
                          "It keeps other people out, not programs: whatever program you "
                          "run may ask the desktop to unlock, too.")},
                Row::Toggle{.id = {Control::understood},
                            .title = translated("I understand"),
                            .detail = {},
                            .isOn = understood_}};
            break;
        case Step::camera: {
            page.title = translated("Allow the camera");
            page.detail =
                translated("It is on only while it looks for you, and while you save your face.");
            Row::Status status{.isGood = facts().cameraAllowed,
                               .title = facts().cameraAllowed ? translated("Camera allowed")
                                                              : translated("Not allowed yet"),
                               .detail = {},
                               .fix = {}};
            if (state.cameraPermission == CameraManager::Permission::notDetermined) {
                status.fix =
                    button(Control::allowCamera, title(UnlockStatusFix::allowCamera, words));
            } else if (state.cameraPermission == CameraManager::Permission::granted &&
                       !state.hasCamera) {
                const UnlockStatus missing = UnlockStatus::NoCamera{};
                status.title = missing.title(words);
                status.detail = missing.detail(words);
            } else if (!status.isGood) {
                status.title = translated("Camera not allowed");
                status.detail = words.camera.advice(Phrase("Turned off in {place}."));
                if (words.camera.hasPlace())
                    status.fix = button(Control::openCameraSettings,
                                        title(UnlockStatusFix::openCameraSettings, words));
            }
            page.rows = {std::move(status)};
            break;
        }
        case Step::accessibility: {
            page.title = translated("Allow typing your password");
            page.detail = translated(words.typing.purpose);
            Row::Status status{
                .isGood = state.accessibilityTrusted,
                .title = translated(state.accessibilityTrusted ? words.typing.allowed
                                                               : words.typing.notAllowed),
                .detail = {},
                .fix = {}};
            if (!status.isGood) {
                status.detail =
                    words.accessibility.advice(Phrase("Switch Marrowby Unlock on in {place}."));
                if (words.accessibility.hasPlace())
                    status.fix = button(Control::openAccessibilitySettings,
                                        title(UnlockStatusFix::openAccessibilitySettings, words));
            }
            page.rows = {std::move(status)};
            break;
        }
        case Step::enrol:
            describeCapture(page);
            break;
        case Step::name:
            page.title = translated("Name this look");
            page.detail =
                replacing_
                    ? translated("What was captured now takes the place of this look.")
                    : translated(
                          "With glasses, without: every look has a name, so that you can tell "
                          "them apart in the settings.");
            if (model_.hasCapturedFace()) {
                page.rows = {Row::TextField{{Control::faceName}, translated("Name"), name_}};
            } else {
                page.rows = {Row::Text{translated("Your face is saved already.")}};
            }
            break;
        case Step::password:
            describePassword(page);
            break;
        case Step::consent:
            page.title = translated("Unlock without your password?");
            page.detail = translated(askingExplanation);
            page.rows = {Row::Toggle{.id = {Control::consent},
                                     .title = translated("Yes, unlock without my password"),
                                     .detail = {},
                                     .isOn = consents_}};
            if (isBusy_) page.rows.emplace_back(Row::Text{translated("Saving…")});
            break;
        case Step::triggers:
            page.title = translated("When should it look for you?");
            page.rows = {Row::Toggle{
                .id = {Control::returnTrigger},
                .title = translated(title(UnlockTrigger::onReturn)),
                .detail = translated("The screen wakes, or you touch a key or {pointer}.",
                                     {{"pointer", words.pointer}}),
                .isOn = triggers_.contains(UnlockTrigger::onReturn)}};
            if (isTyped || state.maySpaceKeyBeHeard) {
                page.rows.emplace_back(
                    Row::Toggle{.id = {Control::spaceTrigger},
                                .title = translated(title(UnlockTrigger::onSpace)),
                                .detail = {},
                                .isOn = triggers_.contains(UnlockTrigger::onSpace)});
            }
            break;
        case Step::done:
            page.title = translated("That’s it");
            page.detail = translated(
                "Lock your screen, come back, and look at it. Open Marrowby Unlock again "
                "to change anything.");
            page.rows = {Row::Toggle{
                .id = {Control::openAtLogin},
                .title = translated("Open at login"),
                .detail = translated("Otherwise nothing looks for you after a restart until you "
                                     "open it."),
                .isOn = opensAtLogin_}};
            break;
    }
    return page;
}

void WelcomePresenter::describeCapture(WindowPage& page) const {
    page.title = translated("Save your face");
    page.detail = translated("Sit as you usually do, and follow the ring with your head.");
    Row::Actions again{.title = {}, .detail = {}, .buttons = {}};
    if (guide_) {
        page.rows.push_back(*guide_);
    } else if (model_.hasCapturedFace()) {
        page.rows.push_back(
            Row::Status{true, translated("Got it"), translated("Your face is captured."), {}});
        again.buttons = {button(Control::captureAgain, translated("Capture Again"))};
    } else if (facts().enrolmentComplete) {
        page.rows.push_back(Row::Status{true, translated("Your face is saved already."), {}, {}});
        again.buttons = {button(Control::captureAgain, translated("Capture Again"))};
    } else {
        again.buttons = {button(Control::captureAgain,
                                problem_.empty() ? translated("Start") : translated("Try Again"))};
    }
    if (!again.buttons.empty()) page.rows.push_back(std::move(again));
}

void WelcomePresenter::describePassword(WindowPage& page) const {
    const PlatformWords::Password& words = model_.words().password;
    page.title = translated(flow_.mode() == UnlockOnboardingMode::updatePassword
                                ? Phrase("Update your {password}")
                                : Phrase("Save your {password}"),
                            {{"password", words.inSentence}});
    page.detail =
        translated("It is checked, then encrypted, and typed only at your own lock screen.");
    if (flow_.mode() == UnlockOnboardingMode::setUp && model_.state().hasPassword) {
        page.rows.push_back(Row::Text{
            translated("A password is saved already. Leave the field empty to keep it.")});
    }
    page.rows.push_back(Row::SecretField{{Control::password}, translated(words.atStart)});
    if (isBusy_) page.rows.push_back(Row::Text{translated("Checking…")});
}

void WelcomePresenter::describeClosed(WindowPage& page) const {
    const UnlockStatus status = UnlockStatus::NotPossible{model_.state().opening};
    page.detail = translated("{status}.", {{"status", status.title(model_.words())}});
    page.rows = {Row::Text{translated(reasonNotPossible(model_.state().opening))},
                 Row::Text{translated(
                     "Your lock screen stays as it is. In the settings you can look around, "
                     "erase what is saved, and quit.")}};
    page.buttons = {button(Control::openSettings, translated("Settings…"))};
    page.buttons.front().isDefault = true;
}

windowrow::Text WelcomePresenter::aboutWhatIsKept() const {
    const PlatformWords& words = model_.words();
    const bool isTyped = model_.state().opening == LockOpening::typing;
    return {translated(
        isTyped
            ? Phrase("It keeps numbers that describe your face, never a picture, and your login "
                     "password. Both are encrypted with a key in your {keyStore}, which {check} "
                     "releases once after every restart.")
            : Phrase("It keeps numbers that describe your face, never a picture, and no password. "
                     "They are encrypted with a key in your {keyStore}, which {check} releases "
                     "once after every restart."),
        {{"keyStore", words.keyStore.inSentence}, {"check", words.ownerCheck.orPassword}})};
}

void WelcomePresenter::press(ControlID id) {
    if (isBusy_) return;
    if (id.control == Control::goBack) goBack();
    if (id.control == Control::goForward) goForward();
    if (id.control == Control::captureAgain && flow_.step() == Step::enrol) capture();
    if (id.control == Control::allowCamera) model_.requestCameraAccess();
    if (id.control == Control::openCameraSettings)
        systemSettings_.open(SystemSettings::Pane::camera);
    if (id.control == Control::openAccessibilitySettings)
        systemSettings_.open(SystemSettings::Pane::accessibility);
    // The last: it may destroy this.
    if (id.control == Control::openSettings) return hooks_.onSettings();
    hooks_.onChange();
}

void WelcomePresenter::toggle(ControlID id, bool isOn) {
    if (id.control == Control::consent && !isBusy_) consents_ = isOn;
    if (id.control == Control::understood) understood_ = isOn;
    if (id.control == Control::openAtLogin) opensAtLogin_ = isOn;
    if (id.control == Control::returnTrigger) triggers_.set(UnlockTrigger::onReturn, isOn);
    if (id.control == Control::spaceTrigger) triggers_.set(UnlockTrigger::onSpace, isOn);
    hooks_.onChange();
}

void WelcomePresenter::enter(ControlID id, std::string text) {
    if (id.control != Control::faceName) return;
    name_ = std::move(text);
    hooks_.onChange();
}

void WelcomePresenter::enter(ControlID id, SecretBytes secret) {
    if (id.control == Control::password) secret_ = std::move(secret);
}

void WelcomePresenter::windowClosed() {
    secret_.reset();
    guide_.reset();
    model_.dropCapturedFace();
}

void WelcomePresenter::windowShown() {
    if (flow_.step() == Step::enrol && !guide_ && !facts().enrolmentComplete) capture();
}

void WelcomePresenter::modelChanged() {
    flow_.follow(model_.state().opening);
    if (!flow_.permissionChanged(facts())) return;
    problem_.clear();
    windowShown();
}

void WelcomePresenter::captureProgressed(const EnrollmentSession& session, const Bitmap& picture) {
    if (flow_.step() != Step::enrol) return;
    guide_ = windowrow::Guide{.progress = session.progress(),
                              .direction = session.headTurn(),
                              .hint = translated(text(session.hint())),
                              .picture = windowrow::CameraPicture{picture, std::nullopt}};
    hooks_.onChange();
}

void WelcomePresenter::goBack() {
    problem_.clear();
    if (flow_.step() == Step::enrol) {
        guide_.reset();
        model_.dropCapturedFace();
    }
    flow_.goBack();
}

void WelcomePresenter::goForward() {
    problem_.clear();
    if (flow_.step() == Step::password) {
        savePassword();
    } else if (flow_.step() == Step::consent && consents_) {
        saveConsent();
    } else if (flow_.step() == Step::name && flow_.mode() == UnlockOnboardingMode::addLook &&
               flow_.canGoForward(facts())) {
        save([this](auto then) { model_.saveCapturedFace(name_, replacing_, std::move(then)); });
    } else {
        moveOn();
    }
}

void WelcomePresenter::savePassword() {
    std::optional<SecretBytes> secret = std::exchange(secret_, std::nullopt);
    const bool isTyped = secret && !secret->empty();
    const bool isSetUp = flow_.mode() == UnlockOnboardingMode::setUp;
    if (isSetUp && !isTyped && model_.state().hasPassword) {
        if (model_.hasCapturedFace()) {
            save([this](auto then) {
                model_.saveCapturedFace(name_, std::nullopt, std::move(then));
            });
        } else {
            passwordSaved_ = true;
            moveOn();
        }
        return;
    }
    if (!isTyped) {
        problem_ = translated(description(CredentialError::empty));
        return;
    }
    save([this, isSetUp, &secret](auto then) {
        if (isSetUp && model_.hasCapturedFace()) {
            model_.saveCapturedFaceAndPassword(name_, *std::move(secret), std::move(then));
        } else {
            model_.savePassword(*std::move(secret), std::move(then));
        }
    });
}

void WelcomePresenter::saveConsent() {
    save([this](auto then) { model_.allowAsking(name_, std::move(then)); });
}

void WelcomePresenter::save(const std::function<void(Completion)>& work) {
    isBusy_ = true;
    work(weakSelf_.guarded([](WelcomePresenter& presenter, const Outcome& outcome) {
        presenter.isBusy_ = false;
        if (outcome) {
            presenter.passwordSaved_ = presenter.flow_.step() == Step::password;
            presenter.consentSaved_ = presenter.flow_.step() == Step::consent;
            presenter.moveOn();
        } else {
            presenter.problem_ = outcome.error();
        }
        presenter.hooks_.onChange();
    }));
}

void WelcomePresenter::moveOn() {
    if (!flow_.goForward(facts())) return;
    if (flow_.isFinished()) {
        finish();
        return;
    }
    windowShown();
}

void WelcomePresenter::capture() {
    problem_.clear();
    guide_ = windowrow::Guide{
        .progress = 0,
        .direction = {},
        .hint = translated(text(EnrollmentSession::Hint(EnrollmentSession::Hint::NoFace{})))};
    model_.captureFace(weakSelf_.guarded([](WelcomePresenter& presenter, const Outcome& outcome) {
        presenter.guide_.reset();
        if (outcome) {
            if (presenter.flow_.step() == Step::enrol) presenter.moveOn();
        } else {
            presenter.problem_ = outcome.error();
        }
        presenter.hooks_.onChange();
    }));
}

void WelcomePresenter::finish() {
    if (flow_.mode() == UnlockOnboardingMode::setUp) {
        UnlockSettings settings = model_.settings();
        settings.triggers = triggers_;
        settings.isEnabled = true;
        settings.hasFinishedWelcome = true;
        model_.apply(std::move(settings));
        // Its switch in the settings shows whether the system took it.
        std::ignore = systemSettings_.setOpensAtLogin(opensAtLogin_);
    }
    model_.wireEngine();
    hooks_.onFinish();
}

}  // namespace marrowby
