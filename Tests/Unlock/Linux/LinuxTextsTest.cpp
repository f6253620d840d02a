// SPDX-License-Identifier: Apache-2.0
#include "Tests/Fakes/PseudoCatalogue.h"
#include "Tests/Unlock/FakeComputer.h"
#include "Tests/Unlock/SceneWindows.h"
#include "Unlock/Island/Island.h"
#include "Unlock/Linux/CommandLine.h"
#include "Unlock/Linux/LinuxWords.h"
#include "Unlock/Linux/MissingModelsPresenter.h"
#include "Unlock/Model/ModelLoaders.h"
#include "Unlock/SelfCheck.h"
#include "Unlock/UnlockApplication.h"
#include "UnlockCore/Engine/UnlockFailure.h"
#include "UnlockCore/Enrollment/EnrollmentSession.h"
#include "UnlockCore/Liveness/LivenessCue.h"
#include "UnlockCore/LockWatching/UnlockGate.h"
#include "UnlockCore/PasswordEntry/KeystrokeInjector.h"
#include "UnlockCore/PasswordEntry/KeystrokePlan.h"
#include "UnlockCore/Recognition/FaceRecognizer.h"
#include "UnlockCore/Recognition/ModelError.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdint>
#include <random>
#include <regex>
#include <set>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

#include <gtest/gtest.h>

namespace marrowby {
namespace {

using Window = UnlockOpening::Window;

/// Words that only fit a Mac.
constexpr std::array macWordList{"mac",
                                 "macos",
                                 "apple",
                                 "touch id",
                                 "keychain",
                                 "system settings",
                                 "privacy & security",
                                 "open settings",
                                 "accessibility",
                                 "input monitoring",
                                 "trackpad",
                                 "notch",
                                 "from applications",
                                 "menu bar",
                                 "dock",
                                 "finder",
                                 "spotlight",
                                 "filevault",
                                 "login window"};

/// The first of those in a text, matched as a whole word.
std::string macWordIn(std::string text) {
    std::ranges::transform(text, text.begin(), [](unsigned char c) { return std::tolower(c); });
    const auto isLetter = [&](std::size_t i) {
        return i < text.size() && std::isalpha(static_cast<unsigned char>(text[i])) != 0;
    };
    for (const std::string_view word : macWordList) {
        for (auto at = text.find(word); at != text.npos; at = text.find(word, at + 1)) {
            if ((at == 0 || !isLetter(at - 1)) && !isLetter(at + word.size()))
                return std::string(word);
        }
    }
    return {};
}

/// Calls `see` with one value of each kind of `T`: every enumerator (other numbers give empty
/// texts), and every alternative of a variant, recursively.
template <typename T, typename See>
void forEachKind(const See& see);

template <typename T, typename See, typename... Alternatives>
void forEachAlternative(const See& see, const std::variant<Alternatives...>* /*tag*/) {
    (forEachKind<Alternatives>([&](const auto& kind) { see(T(kind)); }), ...);
}

template <typename T, typename See>
void forEachKind(const See& see) {
    if constexpr (std::is_enum_v<T>) {
        for (int i = 0; i < 64; ++i)
            see(static_cast<T>(i));
    } else if constexpr (requires { std::variant_size<typename T::variant>::value; }) {
        forEachAlternative<T>(see, static_cast<const typename T::variant*>(nullptr));
    } else if constexpr (std::is_same_v<T, unlockstatus::CameraNotAllowed>) {
        for (const bool wasAsked : {false, true})
            see(T{.wasAsked = wasAsked});
    } else {
        see(T{});
    }
}

class LinuxTexts : public testing::Test, protected FakeComputer {
  protected:
    LinuxTexts() {
        words = &linuxWords;
        desktop = &session;
    }

    void see(std::string_view text) { seen.emplace(text); }
    void see(Phrase phrase) { see(translated(phrase)); }
    void see(const WindowButton& button) {
        see(button.title);
        controls.insert(button.id.control);
    }
    void see(const WindowPage& page);
    void seeErrors();
    void seeStatus();
    void seeSelfCheck(bool isSound);

    /// Random actions of the user and changes of the system, with a fixed seed, until every control
    /// was shown, and for a while after.
    void exerciseWindows();
    void seeCommands();
    /// Countable texts by enumeration, the others by exercising the windows.
    void seeAll();
    [[nodiscard]] bool hasSeenAllControls() const;
    void start();
    void act(const WindowPage& page);
    void changeTheSystem();
    unsigned random(std::size_t below) { return static_cast<unsigned>(dice_() % below); }

    FakeSessionUnlocking session;
    std::set<std::string> seen;
    std::set<WindowControl> controls;
    SceneWindows windows;
    std::unique_ptr<UnlockApplication> application;

  private:
    std::mt19937 dice_{20};
};

void LinuxTexts::see(const WindowPage& page) {
    see(page.title);
    see(page.detail);
    see(page.problem);
    for (const WindowButton& button : page.buttons)
        see(button);
    for (const WindowRow& row : page.rows) {
        if (const auto id = controlOf(row)) controls.insert(id->control);
        std::visit(
            [this](const auto& shown) {
                if constexpr (requires { shown.title; }) see(shown.title);
                if constexpr (requires { shown.detail; }) see(shown.detail);
                if constexpr (requires { shown.hint; }) see(shown.hint);
                if constexpr (requires { shown.fix; })
                    if (shown.fix) see(*shown.fix);
                if constexpr (requires { shown.buttons; })
                    for (const WindowButton& button : shown.buttons)
                        see(button);
                if constexpr (requires { shown.options; })
                    for (const std::string& option : shown.options)
                        see(option);
                if constexpr (requires { shown.lines; })
                    for (const std::string& line : shown.lines)
                        see(line);
                if constexpr (std::is_same_v<decltype(shown), const windowrow::Text&> ||
                              std::is_same_v<decltype(shown), const windowrow::Heading&>)
                    see(shown.text);
            },
            row);
    }
}

void LinuxTexts::seeErrors() {
    const auto seeInWords = [this](const auto& error) { see(description(error, linuxWords)); };
    forEachKind<StorageError>(seeInWords);
    forEachKind<KeystrokeError>(seeInWords);
    forEachKind<CameraError>(seeInWords);
    const auto seeItself = [this](const auto& error) { see(description(error)); };
    forEachKind<FaceRecognitionError>(seeItself);
    forEachKind<RealFaceModelError>(seeItself);
    forEachKind<UnlockFailure>([this](const auto& failure) { see(title(failure)); });
    forEachKind<UnlockFailure>([this](const auto& failure) {
        for (const OverlayPhase& phase :
             {OverlayPhase(OverlayPhase::Failure{failure}), OverlayPhase(OverlayPhase::Prompt{})}) {
            const Island island{.phase = phase, .since = TimeInterval(1), .begin = {}, .notch = {}};
            for (const PanelShape& shape : island.drawing())
                if (const auto* shown = std::get_if<panelshape::Text>(&shape)) see(shown->text);
        }
    });
    forEachKind<EnrollmentSession::Hint>([this](const auto& hint) { see(text(hint)); });
    forEachKind<unlockgate::Refusal>([this](auto refusal) { see(name(refusal)); });
    for (const LivenessCue cue : allLivenessCues)
        for (const auto text : {title(cue), description(cue), denialMessage(cue)})
            see(text);
    see(typablepassword::objection(std::array{std::uint8_t{'\n'}}).value());
}

void LinuxTexts::seeStatus() {
    forEachKind<UnlockStatus>([this](const UnlockStatus& status) {
        see(status.title(linuxWords));
        for (int i = 0; i < 4; ++i)
            see(status.detail(linuxWords, static_cast<LockOpening>(i)));
    });
    forEachKind<UnlockStatusFix>([this](UnlockStatusFix fix) {
        // These buttons need system settings that can be opened.
        if (fix != UnlockStatusFix::openCameraSettings &&
            fix != UnlockStatusFix::openAccessibilitySettings)
            see(title(fix, linuxWords));
    });
}

void LinuxTexts::start() {
    application.reset();
    application = std::make_unique<UnlockApplication>(
        platform(), resources(), windows,
        UnlockApplication::Hooks{.log = [this](const LogLine& line) { see(line.shown()); },
                                 .terminate = [] {}});
}

void LinuxTexts::changeTheSystem() {
    const bool coin = random(2) == 0;
    switch (random(16)) {
        case 0:
            enrollmentCamera->answer = static_cast<CaptureAuthorization>(random(4));
            break;
        case 1:
            keyEvents.trusted = coin;
            break;
        case 2:
            spaceKeys.hasAccess = coin;
            break;
        case 3:
            owner.answer = coin;
            break;
        case 4:
            passwordVerifier.verdict = PasswordCheckResult::Correct{};
            if (!coin) passwordVerifier.verdict = PasswordCheckResult::Incorrect{};
            if (!coin && random(2) == 0)
                passwordVerifier.verdict = PasswordCheckResult::Unavailable{"No answer."};
            break;
        case 5:
            sums["embedder"] = coin ? "e" : "another";
            start();
            break;
        case 6:
            enrollmentCamera->cameras.clear();
            if (coin) enrollmentCamera->cameras = {{.description = {"desk", "Desk camera"}}};
            break;
        case 7:
            lockState.setLocked(coin);
            lockEvents.send(coin ? LockEvent::screenLocked : LockEvent::screenUnlocked);
            break;
        case 8: {
            UnlockSettings settings = application->model().settings();
            settings.passwordHealth.suspended = coin;
            if (coin) settings.offerLocker("/usr/bin/locker");
            application->model().apply(settings);
            break;
        }
        case 9:
            mainThread.advance(TimeInterval(11));
            break;
        case 10:
            keyStore.failing.clear();
            if (coin)
                keyStore.failing.emplace(FakeKeyStore::Operation::remove,
                                         KeychainError(KeychainError::Status{7, {}}));
            break;
        case 11:
            session.setOpening(static_cast<LockOpening>(random(4)));
            break;
        default:
            if (isClosed(session.opening()))
                session.setOpening(coin ? LockOpening::typing : LockOpening::asking);
            // Mostly everything works, or setting up would never finish.
            enrollmentCamera->answer = CaptureAuthorization::authorized;
            enrollmentCamera->cameras = {{.description = {"desk", "Desk camera"}}};
            keyEvents.trusted = true;
            owner.answer = true;
            passwordVerifier.verdict = PasswordCheckResult::Correct{};
            if (windows.isOpen(Window::welcome) && enrollmentCamera->isRunning()) {
                mainThread.advance(TimeInterval(0.1));
                holdAllPoses();
            }
    }
    settle();
}

void LinuxTexts::act(const WindowPage& page) {
    WindowPresenter& presenter = windows.presenter();
    std::vector<std::function<void()>> actions;
    const auto addButton = [&](const WindowButton& button) {
        if (button.isEnabled)
            actions.push_back([&presenter, id = button.id] { presenter.press(id); });
    };
    for (const WindowRow& row : page.rows) {
        std::visit(
            [&](const auto& shown) {
                using Row = std::remove_cvref_t<decltype(shown)>;
                if constexpr (requires { shown.buttons; })
                    std::ranges::for_each(shown.buttons, addButton);
                if constexpr (requires { shown.fix; })
                    if (shown.fix) addButton(*shown.fix);
                if constexpr (requires { shown.isOn; })
                    actions.push_back([&presenter, id = shown.id, isOn = !shown.isOn] {
                        presenter.toggle(id, isOn);
                    });
                if constexpr (requires { shown.options; })
                    actions.push_back([&, id = shown.id, count = shown.options.size()] {
                        presenter.choose(id, random(count));
                    });
                if constexpr (std::is_same_v<Row, windowrow::TextField>)
                    actions.push_back([&presenter, id = shown.id] { presenter.enter(id, "Anna"); });
            },
            row);
    }
    for (const WindowButton& button : page.buttons)
        addButton(button);
    if (windows.row<windowrow::SecretField>() && random(3) != 0)
        windows.typeSecret(random(4) == 0 ? "a\nb" : "secret");
    // Mostly the default button, or setting up would never finish.
    const auto usual = std::ranges::find_if(
        page.buttons, [](const WindowButton& b) { return b.isDefault && b.isEnabled; });
    if (usual != page.buttons.end() && random(5) != 0) {
        presenter.press(usual->id);
    } else if (!actions.empty()) {
        actions[random(actions.size())]();
    }
    settle();
}

bool LinuxTexts::hasSeenAllControls() const {
    // The last three open settings panes, which a Linux desktop lacks.
    for (int i = 0; i < static_cast<int>(WindowControl::openCameraSettings); ++i) {
        if (!controls.contains(static_cast<WindowControl>(i))) return false;
    }
    // The welcome window's last page, which follows all others.
    return seen.contains(translated("That’s it"));
}

void LinuxTexts::exerciseWindows() {
    start();
    for (int left = 500, i = 0; left > 0 && i < 20000; ++i) {
        if (hasSeenAllControls()) --left;
        if (!windows.isOpen(windows.front())) {
            application->shouldHandleReopen();
            mainThread.advance(TimeInterval(0.7));
            settle();
        }
        if (random(4) == 0) changeTheSystem();
        if (!windows.isOpen(windows.front())) continue;
        const WindowPage page = windows.page();
        see(page);
        if (statusItem.shown) see(statusItem.shown->status);
        if (notices.shown) {
            see(notices.shown->title);
            see(notices.shown->text);
            see(notices.shown->button);
        }
        if (random(40) == 0) {
            windows.closeByUser();
        } else {
            act(page);
        }
    }
    for (const auto& prompt : owner.prompts)
        see(prompt.reason);
}

void LinuxTexts::seeSelfCheck(bool isSound) {
    keyEvents.trusted = spaceKeys.hasAccess = isSound;
    enrollmentCamera->answer =
        isSound ? CaptureAuthorization::authorized : CaptureAuthorization::denied;
    keyStore.failing.clear();
    if (!isSound)
        keyStore.failing.emplace(FakeKeyStore::Operation::load,
                                 KeychainError(KeychainError::Status{7, {}}));
    session.isKnown = isSound;
    bool hasEnded = false;
    SelfCheck check(
        selfCheckServices(), [this](const std::string& line) { see(line); },
        [&](bool /*isAllThere*/) { hasEnded = true; });
    check.start();
    session.tellFacts();
    settle();
    mainThread.advance(SelfCheck::longestWait);
    settle();
    EXPECT_TRUE(hasEnded);
}

void LinuxTexts::seeCommands() {
    see(CommandLine::usage());
    for (const auto& line : std::vector<std::vector<std::string>>{{"status"},
                                                                  {"doctor"},
                                                                  {"look"},
                                                                  {"pause"},
                                                                  {"pause", "1"},
                                                                  {"pause", "2"},
                                                                  {"resume"},
                                                                  {"resume"},
                                                                  {"pause", "0"},
                                                                  {"dance"}}) {
        const auto command = Command::parse(line);
        if (!command) {
            see(command.error());
            continue;
        }
        application->carryOut(*command, [this](const CommandReply& reply) { see(reply.text); });
        settle();
    }
}

void LinuxTexts::seeAll() {
    seeErrors();
    seeStatus();
    MissingModelsPresenter missing(
        "prepare",
        {.onLookAgain = {}, .onQuit = {}, .onPrepare = [] {}, .onCancel = {}, .onCopy = {}});
    see(missing.page());
    missing.setProgress("7 %");
    see(missing.page());
    exerciseWindows();
    for (int i = 0; i < 4; ++i) {
        session.setOpening(static_cast<LockOpening>(i));
        start();
        settle();
        seeCommands();
    }
    application.reset();
    for (int i = 0; i < 4; ++i) {
        session.setOpening(static_cast<LockOpening>(i));
        for (const bool isSound : {true, false})
            seeSelfCheck(isSound);
    }
    EXPECT_TRUE(hasSeenAllControls());
}

TEST_F(LinuxTexts, containNoMacWords) {
    seeAll();
    for (const auto opensSettings :
         {WindowControl::openCameraSettings, WindowControl::openAccessibilitySettings,
          WindowControl::openInputMonitoringSettings})
        EXPECT_FALSE(controls.contains(opensSettings));
    for (const std::string& text : seen)
        EXPECT_EQ(macWordIn(text), "") << text;
}

/// What the catalogue doesn't have, a translation could not reach.
TEST_F(LinuxTexts, areAllInTheCatalogue) {
    const PseudoCatalogue pseudo;
    seeAll();
    // Of the user, of the system and of programs: nobody's to translate.
    const std::regex foreign(
        "Marrowby Unlock|Anna|Desk camera|No answer\\.|Prepare them\\.|prepare|it is there|7 %|"
        "test|ok  |NO  |/usr/bin/locker");
    EXPECT_GT(seen.size(), 300U);
    for (const std::string& text : seen) {
        const std::string rest =
            std::regex_replace(PseudoCatalogue::outside(text), foreign, std::string());
        EXPECT_TRUE(std::ranges::none_of(
            rest, [](unsigned char c) { return std::isalpha(c) != 0 || c >= 0x80; }))
            << text << "\noutside: " << rest;
    }
}

TEST_F(LinuxTexts, sayWhatToDoAboutAModelThatIsGone) {
    const ModelPack pack{.folder = "/nonexistent",
                         .embedderFile = "Face.onnx",
                         .embedderIdentifier = {},
                         .realFaceFile = "RealFace.onnx"};
    const UnlockPlatform with = platform();
    const std::string remedy = "Prepare the models again, then restart Marrowby Unlock.";
    EXPECT_EQ(description(embedderLoader(pack, with.models, with.imaging, with.words)().error()),
              "The face model isn’t in the models’ folder (Face.onnx). " + remedy);
    EXPECT_EQ(description(antiSpoofLoader(pack, with.models, with.words)().error()),
              "The real-face model isn’t in the models’ folder (RealFace.onnx). " + remedy);
}

}  // namespace
}  // namespace marrowby
