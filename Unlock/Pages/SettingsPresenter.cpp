// SPDX-License-Identifier: Apache-2.0
#include "Unlock/Pages/SettingsPresenter.h"

#include "Unlock/Pages/TryPage.h"
#include "UnlockCore/Foundation/Phrase.h"
#include "UnlockCore/Foundation/Text.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <utility>

namespace marrowby {

namespace {

using Row = WindowRow;
using Control = WindowControl;

constexpr std::string_view applicationName = "Marrowby Unlock";
constexpr std::array livenessModes{LivenessMode::standard, LivenessMode::strict};
constexpr std::size_t shownEntries = 12;

WindowButton button(ControlID id, std::string title) {
    return {.id = id, .title = std::move(title)};
}

template <typename T, std::size_t N>
std::size_t indexOf(const std::array<T, N>& all, const T& value) {
    const auto* const place = std::ranges::find(all, value);
    return place == all.end() ? 0 : static_cast<std::size_t>(place - all.begin());
}

template <typename T, std::size_t N>
std::vector<std::string> titlesOf(const std::array<T, N>& all, Phrase (*title)(T)) {
    std::vector<std::string> titles;
    titles.reserve(N);
    for (const T each : all)
        titles.push_back(translated(title(each)));
    return titles;
}

std::string age(TimeInterval since) {
    constexpr double minute = 60;
    constexpr double hour = 3600;
    constexpr double day = 86400;
    const double seconds = since.count();
    const auto count = [](double value) {
        return Filling("count", static_cast<std::int64_t>(value));
    };
    if (seconds < minute) return translated("just now");
    if (seconds < hour) return translated("{count} min ago", {count(seconds / minute)});
    if (seconds < day) return translated("{count} h ago", {count(seconds / hour)});
    return translated("{count} d ago", {count(seconds / day)});
}

const PlatformWords::Right& rightOf(SystemSettings::Pane pane, const PlatformWords& words) {
    switch (pane) {
        case SystemSettings::Pane::camera:
            return words.camera;
        case SystemSettings::Pane::accessibility:
            return words.accessibility;
        case SystemSettings::Pane::inputMonitoring:
            break;
    }
    return words.inputMonitoring;
}

/// None where the system has no settings to open for it.
std::optional<WindowButton> fixFor(const UnlockStatus& status, const PlatformWords& words) {
    const auto fix = status.fix();
    if (!fix || (fix == UnlockStatusFix::openCameraSettings && !words.camera.hasPlace()) ||
        (fix == UnlockStatusFix::openAccessibilitySettings && !words.accessibility.hasPlace())) {
        return std::nullopt;
    }
    return button({Control::fix}, title(*fix, words));
}

/// The automatic choice is first.
Row cameraRow(Control control, std::string title, std::string detail,
              const std::optional<std::string>& chosen, const std::vector<CameraDevice>& cameras) {
    Row::Choice row{.id = {control},
                    .title = std::move(title),
                    .detail = std::move(detail),
                    .options = {translated("Automatic")},
                    .selected = 0};
    for (const CameraDevice& device : cameras) {
        if (device.id == chosen) row.selected = row.options.size();
        row.options.push_back(device.name);
    }
    if (chosen && row.selected == 0) {
        row.selected = row.options.size();
        row.options.push_back(translated("The one chosen before"));
        row.detail =
            translated("The chosen camera isn’t connected. Until it is, another one looks.");
    }
    return row;
}

/// The last option, a camera that isn’t connected, leaves the choice as it is.
void chooseCamera(std::optional<std::string>& chosen, std::size_t option,
                  const std::vector<CameraDevice>& cameras) {
    if (option == 0) chosen.reset();
    if (option > 0 && option <= cameras.size()) chosen = cameras[option - 1].id;
}

std::string modelsOf(const UnlockModel& model) {
    const ModelPack& models = model.models();
    return models.knowsRealFaces()
               ? translated("Its models: {models}.", {{"models", models.title()}})
               : translated("Its models: the rehearsal’s, which know made-up people only.");
}

}  // namespace

SettingsPresenter::SettingsPresenter(UnlockModel& model, SystemSettings& settings,
                                     const UnlockJournal& journal, const SystemClock& clock,
                                     Hooks hooks)
    : model_(model),
      systemSettings_(settings),
      journal_(journal),
      clock_(clock),
      hooks_(std::move(hooks)) {}

WindowPage SettingsPresenter::page() const {
    if (const auto* trying = std::get_if<Trying>(&sheet_)) return tryPage(trying->view);
    if (!std::holds_alternative<Nothing>(sheet_)) return questionPage();
    const UnlockSettings& settings = model_.settings();
    const UnlockStatus status = model_.status();
    WindowPage page{.title = std::string(applicationName),
                    .detail = {},
                    .rows = {},
                    .problem = advice_.empty() ? model_.state().problem.value_or("") : advice_,
                    .buttons = {}};
    page.rows = {Row::Toggle{.id = {Control::enabled},
                             .title = translated("Unlock with your face"),
                             .detail = {},
                             .isOn = settings.isEnabled},
                 Row::Status{.isGood = status.isReady(),
                             .title = status.title(model_.words()),
                             .detail = status.detail(model_.words(), model_.state().opening),
                             .fix = fixFor(status, model_.words())}};
    if (settings.offeredLocker) {
        page.rows.emplace_back(Row::Actions{
            .title = translated("Is “{locker}” your screen locker?",
                                {{"locker", *settings.offeredLocker}}),
            .detail = translated(
                "It had the keyboard and covered the screen when your password was to be "
                "typed. Marrowby Unlock doesn’t know it, so nothing was typed. Say yes only "
                "if you lock your screen with it."),
            .buttons = {button({Control::vouchForLocker}, translated("Yes, Type Into It")),
                        button({Control::declineLocker}, translated("No"))}});
    }
    if (model_.state().opening == LockOpening::asking) {
        page.rows.emplace_back(Row::Toggle{.id = {Control::consent},
                                           .title = translated("Unlock without your password"),
                                           .detail = translated(askingExplanation),
                                           .isOn = settings.asksDesktop});
    }
    addLooking(page.rows);
    addSaved(page.rows);
    addActivity(page.rows);
    page.buttons = {
        {.id = {Control::erase}, .title = translated("Erase Everything…"), .isDestructive = true},
        button({Control::quit}, translated("Quit…"))};
    return page;
}

void SettingsPresenter::addLooking(std::vector<WindowRow>& rows) const {
    const UnlockSettings& settings = model_.settings();
    rows.emplace_back(Row::Heading{translated("Looking")});
    rows.emplace_back(Row::Toggle{.id = {Control::returnTrigger},
                                  .title = translated(title(UnlockTrigger::onReturn)),
                                  .detail = {},
                                  .isOn = settings.triggers.contains(UnlockTrigger::onReturn)});
    const bool isTyped = model_.state().opening == LockOpening::typing;
    const bool offersSpace = isTyped || model_.state().maySpaceKeyBeHeard;
    if (offersSpace) {
        rows.emplace_back(Row::Toggle{.id = {Control::spaceTrigger},
                                      .title = translated(title(UnlockTrigger::onSpace)),
                                      .detail = {},
                                      .isOn = settings.triggers.contains(UnlockTrigger::onSpace)});
    }
    if (offersSpace && settings.triggers.contains(UnlockTrigger::onSpace) &&
        !model_.state().maySpaceKeyBeHeard) {
        const PlatformWords::Right& right = model_.words().inputMonitoring;
        Row::Status status{
            .isGood = false,
            .title = translated("Space isn’t heard"),
            .detail = right.advice(Phrase("Marrowby Unlock needs to be allowed in {place}.")),
            .fix = {}};
        if (right.hasPlace())
            status.fix =
                button({Control::openInputMonitoringSettings}, translated("Open Settings…"));
        rows.emplace_back(std::move(status));
    }
    std::vector<std::string> seconds;
    seconds.reserve(UnlockSettings::scanSecondsChoices.size());
    for (const std::int64_t each : UnlockSettings::scanSecondsChoices)
        seconds.push_back(
            counted("{count} second", "{count} seconds", static_cast<std::uint64_t>(each)));
    rows.emplace_back(
        Row::Choice{.id = {Control::scanSeconds},
                    .title = translated("Look for"),
                    .detail = {},
                    .options = std::move(seconds),
                    .selected = indexOf(UnlockSettings::scanSecondsChoices, settings.scanSeconds)});
    rows.emplace_back(Row::Choice{.id = {Control::strictness},
                                  .title = translated("How alike a face must be"),
                                  .detail = {},
                                  .options = titlesOf(allMatchStrictnesses, displayName),
                                  .selected = indexOf(allMatchStrictnesses, settings.strictness)});
    rows.emplace_back(Row::Choice{.id = {Control::livenessMode},
                                  .title = translated("Proof that it’s you, and not a picture"),
                                  .detail = settingsNote(settings.livenessMode, model_.words()),
                                  .options = titlesOf(livenessModes, title),
                                  .selected = indexOf(livenessModes, settings.livenessMode)});
    rows.emplace_back(
        Row::Actions{.title = translated("See what it thinks of you"),
                     .detail = translated("With the camera on. Nothing is typed or kept."),
                     .buttons = {button({Control::tryIt}, translated("Try It…"))}});
    rows.emplace_back(Row::Text{modelsOf(model_)});
    const auto cameras = model_.cameras();
    rows.emplace_back(cameraRow(Control::builtInDisplayCamera,
                                translated("Camera at the built-in display"), {},
                                settings.builtInDisplayCameraID, cameras));
    rows.emplace_back(cameraRow(
        Control::externalDisplayCamera, translated("Camera at an external display"),
        translated("Used whenever one is in use."), settings.externalDisplayCameraID, cameras));
    // Nothing can be shown above the lock of a desktop that is asked.
    if (isTyped) {
        rows.emplace_back(Row::Toggle{.id = {Control::showsAnimation},
                                      .title = translated("Show what it does at the lock screen"),
                                      .detail = {},
                                      .isOn = settings.showsAnimation});
    }
    rows.emplace_back(Row::Toggle{.id = {Control::openAtLogin},
                                  .title = translated("Open at login"),
                                  .detail = {},
                                  .isOn = systemSettings_.opensAtLogin()});
}

void SettingsPresenter::addSaved(std::vector<WindowRow>& rows) const {
    const UnlockModel::State& state = model_.state();
    rows.emplace_back(Row::Heading{translated("Saved, encrypted")});
    if (state.isEnrolled && state.identities.empty()) {
        rows.emplace_back(
            Row::Actions{.title = translated("Your face"),
                         .detail = {},
                         .buttons = {button({Control::openVault}, translated("Show…"))}});
    }
    for (std::size_t i = 0; i < state.identities.size(); ++i) {
        const FaceIdentity& face = state.identities[i];
        const Filling saved("age", age(clock_.now() - face.createdAt));
        const Filling name("name", face.name);
        rows.emplace_back(Row::Toggle{
            .id = {Control::useFace, i},
            .title = face.name,
            .detail = model_.isComparable(face)
                          ? translated("Saved {age}", {saved})
                          : translated("Saved {age}, by other models: not looked for", {saved}),
            .isOn = face.isEnabled});
        rows.emplace_back(
            Row::Actions{.title = {},
                         .detail = {},
                         .buttons = {{.id = {Control::renameFace, i},
                                      .title = translated("Rename…"),
                                      .spokenTitle = translated("Rename “{name}”…", {name})},
                                     {.id = {Control::captureFaceAnew, i},
                                      .title = translated("Capture Anew…"),
                                      .spokenTitle = translated("Capture “{name}” Anew…", {name})},
                                     {.id = {Control::removeFace, i},
                                      .title = translated("Remove…"),
                                      .isDestructive = true,
                                      .spokenTitle = translated("Remove “{name}”…", {name})}}});
    }
    Row::Actions changes{.title = {},
                         .detail = {},
                         .buttons = {button({Control::addFace}, translated("Add a Look…"))}};
    if (state.opening == LockOpening::typing) {
        changes.buttons.push_back(
            button({Control::updatePassword},
                   translated(state.hasPassword ? Phrase("Update {password}…")
                                                : Phrase("Save {password}…"),
                              {{"password", model_.words().password.onButton}})));
    }
    rows.emplace_back(std::move(changes));
    rows.emplace_back(Row::Choice{
        .id = {Control::autoLock},
        .title = translated("Ask for {check} again", {{"check", model_.words().ownerCheck.name}}),
        .detail = translated(autoLockExplanation),
        .options = titlesOf(allAutoLockIntervals, title),
        .selected = indexOf(allAutoLockIntervals, model_.settings().autoLock)});
}

void SettingsPresenter::addActivity(std::vector<WindowRow>& rows) const {
    const auto& entries = journal_.entries();
    if (entries.empty()) return;
    Row::Log log;
    const Date now = clock_.now();
    const std::size_t count = std::min(shownEntries, entries.size());
    for (std::size_t i = entries.size() - count; i < entries.size(); ++i)
        log.lines.push_back(translated(
            "{event} · {age}", {{"event", entries[i].text}, {"age", age(now - entries[i].at)}}));
    rows.emplace_back(Row::Heading{translated("Lately")});
    rows.emplace_back(std::move(log));
}

WindowPage SettingsPresenter::questionPage() const {
    struct Words {
        std::string title;
        std::string detail;
        std::string confirm;
    };
    struct WordsOf {
        const PlatformWords& platform;
        Words operator()(const Nothing& /*unused*/) const { return {}; }
        Words operator()(const Erasing& /*unused*/) const {
            return {
                translated("Erase everything?"),
                translated(
                    "Your face, your {password} and the key are removed from this {computer}. "
                    "To use it again, set it up again.",
                    {{"password", platform.password.inSentence}, {"computer", platform.computer}}),
                translated("Erase")};
        }
        Words operator()(const Quitting& /*unused*/) const {
            return {translated("Quit Marrowby Unlock?"),
                    translated("The lock screen stays as it is until you open it again from "
                               "{applications}.",
                               {{"applications", platform.applications}}),
                    translated("Quit")};
        }
        Words operator()(const RemovingFace& removing) const {
            return {translated("Remove “{name}”?", {{"name", removing.name}}),
                    translated("This look doesn’t unlock your {computer} any more.",
                               {{"computer", platform.computer}}),
                    translated("Remove")};
        }
        Words operator()(const RenamingFace& renaming) const {
            return {translated("Rename “{name}”", {{"name", renaming.oldName}}),
                    {},
                    translated("Rename")};
        }
        Words operator()(const Trying& /*unused*/) const { return {}; }
    };
    const Words words = std::visit(WordsOf{.platform = model_.words()}, sheet_);
    const auto* renaming = std::get_if<RenamingFace>(&sheet_);
    std::vector<WindowRow> rows;
    if (renaming != nullptr)
        rows.emplace_back(Row::TextField{{Control::faceName}, translated("Name"), renaming->name});
    // Return must not confirm what cannot be undone.
    const bool isDestructive =
        std::holds_alternative<Erasing>(sheet_) || std::holds_alternative<RemovingFace>(sheet_);
    return {
        .title = words.title,
        .detail = words.detail,
        .rows = std::move(rows),
        .problem = {},
        .buttons = {
            {.id = {Control::cancel}, .title = translated("Cancel"), .isDefault = isDestructive},
            {.id = {Control::confirm},
             .title = words.confirm,
             .isEnabled = renaming == nullptr || !trimmed(renaming->name).empty(),
             .isDefault = !isDestructive,
             .isDestructive = isDestructive}}};
}

void SettingsPresenter::press(ControlID id) {
    advice_.clear();
    const auto& faces = model_.state().identities;
    if (id.control == Control::fix) applyFix();
    if (id.control == Control::openVault) openVault();
    if (id.control == Control::openInputMonitoringSettings) {
        model_.requestSpaceKeyAccess();
        open(SystemSettings::Pane::inputMonitoring);
    }
    if (id.control == Control::addFace)
        hooks_.onOnboarding(
            model_.state().isEnrolled ? UnlockOnboardingMode::addLook : UnlockOnboardingMode::setUp,
            std::nullopt);
    if (id.control == Control::updatePassword)
        hooks_.onOnboarding(UnlockOnboardingMode::updatePassword, std::nullopt);
    if (id.control == Control::captureFaceAnew && id.item < faces.size())
        hooks_.onOnboarding(UnlockOnboardingMode::addLook, faces[id.item].id);
    if (id.control == Control::renameFace && id.item < faces.size())
        sheet_ = RenamingFace{faces[id.item].id, faces[id.item].name, faces[id.item].name};
    if (id.control == Control::tryIt) tryIt();
    if (id.control == Control::removeFace && id.item < faces.size())
        sheet_ = RemovingFace{faces[id.item].id, faces[id.item].name};
    if (id.control == Control::erase) sheet_ = Erasing{};
    if (id.control == Control::quit) sheet_ = Quitting{};
    if (id.control == Control::cancel) leaveSheet();
    if (id.control == Control::confirm) confirm();
    if (id.control == Control::vouchForLocker || id.control == Control::declineLocker)
        change([&](UnlockSettings& settings) {
            settings.answerOffer(id.control == Control::vouchForLocker);
        });
    hooks_.onChange();
}

void SettingsPresenter::applyFix() {
    const auto fix = model_.status().fix();
    if (!fix) return;
    switch (*fix) {
        case UnlockStatusFix::setUp:
            return hooks_.onOnboarding(UnlockOnboardingMode::setUp, std::nullopt);
        case UnlockStatusFix::savePassword:
        case UnlockStatusFix::updatePassword:
            return hooks_.onOnboarding(UnlockOnboardingMode::updatePassword, std::nullopt);
        case UnlockStatusFix::allowCamera:
            return model_.requestCameraAccess();
        case UnlockStatusFix::openCameraSettings:
            return open(SystemSettings::Pane::camera);
        case UnlockStatusFix::openAccessibilitySettings:
            return open(SystemSettings::Pane::accessibility);
        case UnlockStatusFix::touchID:
            return openVault();
        case UnlockStatusFix::captureAgain:
            return hooks_.onOnboarding(UnlockOnboardingMode::addLook, std::nullopt);
        case UnlockStatusFix::resume:
            return model_.resume();
        case UnlockStatusFix::erase:
            sheet_ = Erasing{};
            return;
    }
}

void SettingsPresenter::confirm() {
    const Sheet question = std::exchange(sheet_, Nothing{});
    if (std::holds_alternative<Erasing>(question)) model_.eraseEverything();
    if (std::holds_alternative<Quitting>(question)) hooks_.onQuit();
    if (const auto* removing = std::get_if<RemovingFace>(&question))
        model_.removeFace(removing->id, [](const auto& /*the model's problem*/) {});
    if (const auto* renaming = std::get_if<RenamingFace>(&question))
        model_.renameFace(renaming->id, renaming->name, [](const auto& /*the model's problem*/) {});
}

void SettingsPresenter::tryIt() {
    sheet_ = Trying{};
    model_.startTryOut(
        {.onChange = weakSelf_.guarded([](SettingsPresenter& self, const TryOut::View& view) {
             if (auto* trying = std::get_if<Trying>(&self.sheet_)) trying->view = view;
             self.hooks_.onChange();
         }),
         .onEnd = weakSelf_.guarded([](SettingsPresenter& self, const std::string& reason) {
             self.sheet_ = Nothing{};
             self.advice_ = reason;
             self.hooks_.onChange();
         })});
}

void SettingsPresenter::leaveSheet() {
    if (std::holds_alternative<Trying>(sheet_)) model_.endTryOut();
    sheet_ = Nothing{};
}

void SettingsPresenter::enter(ControlID id, std::string text) {
    auto* renaming = std::get_if<RenamingFace>(&sheet_);
    if (renaming == nullptr || id.control != Control::faceName) return;
    renaming->name = std::move(text);
    hooks_.onChange();
}

void SettingsPresenter::open(SystemSettings::Pane pane) {
    if (!systemSettings_.open(pane))
        advice_ = rightOf(pane, model_.words()).advice(Phrase("It is in {place}."));
}

void SettingsPresenter::toggle(ControlID id, bool isOn) {
    advice_.clear();
    const auto& faces = model_.state().identities;
    if (id.control == Control::useFace && id.item < faces.size())
        model_.setFaceEnabled(faces[id.item].id, isOn, [](const auto& /*the model's problem*/) {});
    if (id.control == Control::openAtLogin && !systemSettings_.setOpensAtLogin(isOn))
        advice_ = translated("The system didn’t take the change.");
    change([&](UnlockSettings& settings) {
        if (id.control == Control::enabled) settings.isEnabled = isOn;
        if (id.control == Control::consent && !isOn) settings.asksDesktop = false;
        if (id.control == Control::showsAnimation) settings.showsAnimation = isOn;
        if (id.control == Control::returnTrigger)
            settings.triggers.set(UnlockTrigger::onReturn, isOn);
        if (id.control == Control::spaceTrigger)
            settings.triggers.set(UnlockTrigger::onSpace, isOn);
    });
    if (id.control == Control::enabled && isOn) model_.wireEngine();
    // The welcome flow explains it, and asks the owner.
    if (id.control == Control::consent && isOn)
        hooks_.onOnboarding(UnlockOnboardingMode::setUp, std::nullopt);
    hooks_.onChange();
}

void SettingsPresenter::openVault() {
    model_.openVault([](const auto& /*the model's problem*/) {});
}

void SettingsPresenter::choose(ControlID id, std::size_t option) {
    const auto pick = [option](const auto& all, auto& value) {
        if (option < all.size()) value = all[option];
    };
    change([&](UnlockSettings& settings) {
        if (id.control == Control::strictness) pick(allMatchStrictnesses, settings.strictness);
        if (id.control == Control::livenessMode) pick(livenessModes, settings.livenessMode);
        if (id.control == Control::autoLock) pick(allAutoLockIntervals, settings.autoLock);
        if (id.control == Control::scanSeconds)
            pick(UnlockSettings::scanSecondsChoices, settings.scanSeconds);
        if (id.control == Control::builtInDisplayCamera)
            chooseCamera(settings.builtInDisplayCameraID, option, model_.cameras());
        if (id.control == Control::externalDisplayCamera)
            chooseCamera(settings.externalDisplayCameraID, option, model_.cameras());
    });
    hooks_.onChange();
}

void SettingsPresenter::windowClosed() {
    leaveSheet();
    advice_.clear();
    model_.forgetProblem();
}

void SettingsPresenter::change(const std::function<void(UnlockSettings&)>& edit) {
    UnlockSettings settings = model_.settings();
    edit(settings);
    if (settings != model_.settings()) model_.apply(std::move(settings));
}

}  // namespace marrowby
