// SPDX-License-Identifier: Apache-2.0
#include "Tests/Unlock/FakeComputer.h"
#include "Tests/Unlock/SceneWindows.h"
#include "Unlock/UnlockApplication.h"

#include <algorithm>
#include <utility>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace marrowby {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using Window = UnlockOpening::Window;

class UnlockApplicationTest : public testing::Test, protected FakeComputer {
  protected:
    UnlockApplicationTest() { start(); }

    void start() {
        application.reset();
        log.clear();
        application = std::make_unique<UnlockApplication>(
            platform(), resources(), windows,
            UnlockApplication::Hooks{
                .log = [this](const LogLine& line) { log.push_back(line.withoutNames()); },
                .terminate = [this] { terminated = true; }});
    }
    void reopen() {
        application->shouldHandleReopen();
        mainThread.advance(TimeInterval(0.7));
        settle();
    }

    bool press(std::string_view title) {
        const bool pressed = windows.press(title);
        settle();
        return pressed;
    }
    bool toggle(std::string_view title, bool isOn) {
        const bool toggled = windows.toggle(title, isOn);
        settle();
        return toggled;
    }
    void openVault() {
        application->model().openVault([](const auto& /*outcome*/) {});
        settle();
    }
    void lockScreen() {
        lockState.setLocked(true);
        lockEvents.send(LockEvent::screenLocked);
        settle();
    }

    CommandReply tell(const Command& command) {
        CommandReply reply;
        application->carryOut(command, [&](const CommandReply& given) { reply = given; });
        settle();
        return reply;
    }

    /// Whether it looks when the locked computer wakes. It is unlocked again afterwards.
    bool looksOnReturn() {
        lockScreen();
        mainThread.advance(TimeInterval(60));
        lockEvents.send(LockEvent::wake);
        settle();
        const bool looks = std::ranges::find(log, "Looking (wake)") != log.end();
        lockState.setLocked(false);
        lockEvents.send(LockEvent::screenUnlocked);
        settle();
        return looks;
    }
    [[nodiscard]] std::string detailOf(std::string_view toggle) {
        for (const WindowRow& row : windows.page().rows) {
            const auto* found = std::get_if<WindowRow::Toggle>(&row);
            if (found != nullptr && found->title == toggle) return found->detail;
        }
        return "there is no such row";
    }

    /// From the first page to the face's.
    void walkToCapture() {
        reopen();
        EXPECT_TRUE(press("Continue"));
        EXPECT_TRUE(toggle("I understand", true));
        EXPECT_TRUE(press("Continue") && press("Continue") && press("Continue"));
        EXPECT_EQ(windows.page().title, "Save your face");
    }
    void capture() {
        mainThread.advance(TimeInterval(0.1));
        holdAllPoses();
    }
    void nameAndPassword(std::string_view password) {
        EXPECT_EQ(windows.page().title, "Name this look");
        EXPECT_TRUE(windows.write("Anna"));
        EXPECT_TRUE(press("Continue"));
        windows.typeSecret(password);
        EXPECT_TRUE(press("Continue"));
    }
    void setUpAll() {
        walkToCapture();
        capture();
        nameAndPassword("secret");
        EXPECT_TRUE(press("Continue") && press("Done")) << windows.page().title;
    }

    SceneWindows windows;
    std::vector<std::string> log;
    bool terminated = false;
    std::unique_ptr<UnlockApplication> application;
};

TEST_F(UnlockApplicationTest, neverSaysANameInTheLog) {
    UnlockJournal journal;
    journal.add({.sentence = Phrase("Recognised {name}"), .name = "Anna"}, mainThread.now());
    EXPECT_EQ(journal.entries().back().text, "Recognised");
    for (int i = 0; i < 1000; ++i)
        journal.add({.sentence = Phrase("Unlocked")}, mainThread.now());
    EXPECT_EQ(journal.entries().size(), UnlockJournal::capacity);
}

TEST_F(UnlockApplicationTest, waitsForTheOwnerAfterARestart) {
    setUpAll();
    ASSERT_EQ(owner.prompts.size(), 1U);
    EXPECT_EQ(owner.prompts[0].reason, "save your face and Mac password");
    EXPECT_TRUE(application->model().status().isReady());
    start();
    application->didFinishLaunching({.isAtLogin = true, .isVisible = true});
    mainThread.advance(TimeInterval(2));
    EXPECT_FALSE(windows.isOpen(Window::welcome) || windows.isOpen(Window::settings));
    reopen();

    EXPECT_EQ(windows.front(), Window::settings);
    EXPECT_EQ(windows.row<WindowRow::Status>()->title, "Needs Touch ID once this session");
    EXPECT_TRUE(application->model().state().identities.empty());
    lockScreen();
    EXPECT_THAT(log, ElementsAre("Models: test", "Locked: waiting for you to come back"));

    owner.prompts.clear();
    EXPECT_TRUE(press("Use Touch ID…"));
    EXPECT_EQ(owner.prompts.at(0).reason, "open your saved face and Mac password");
    EXPECT_EQ(windows.row<WindowRow::Status>()->title, "Ready");
    EXPECT_EQ(application->model().state().identities.size(), 1U);
}

TEST_F(UnlockApplicationTest, remindsTheOwnerAfterALoginUntilTheCheckWasPassed) {
    setUpAll();
    application->didFinishLaunching({.isAtLogin = true, .isVisible = true});
    EXPECT_FALSE(notices.shown);
    start();
    application->didFinishLaunching({.isAtLogin = false, .isVisible = true});
    EXPECT_FALSE(notices.shown);
    start();
    application->didFinishLaunching({.isAtLogin = true, .isVisible = true});
    ASSERT_TRUE(notices.shown);
    EXPECT_EQ(notices.shown->title, "Needs Touch ID once this session");

    lockScreen();
    EXPECT_FALSE(notices.shown);
    const auto press = [this] {
        notices.onPressed();
        settle();
    };
    owner.prompts.clear();
    press();
    EXPECT_TRUE(owner.prompts.empty());
    EXPECT_FALSE(looksOnReturn());
    EXPECT_TRUE(notices.shown);

    // Refused, it comes again after the next lock.
    owner.answer = false;
    press();
    press();
    EXPECT_EQ(owner.prompts.size(), 1U);
    EXPECT_FALSE(notices.shown);
    EXPECT_FALSE(looksOnReturn());
    ASSERT_TRUE(notices.shown);
    owner.answer = true;
    press();
    EXPECT_TRUE(application->model().status().isReady());
    EXPECT_TRUE(looksOnReturn());
    EXPECT_FALSE(notices.shown);

    start();
    application->didFinishLaunching({.isAtLogin = true, .isVisible = true});
    EXPECT_TRUE(notices.shown);
    application->willTerminate();
    EXPECT_FALSE(notices.shown || notices.onPressed || statusItem.onCommand);
}

TEST_F(UnlockApplicationTest, obeysTheTray) {
    setUpAll();
    application->didFinishLaunching({.isAtLogin = true, .isVisible = true});
    using Command = StatusItem::Command;
    EXPECT_EQ(statusItem.shown, (StatusItem::Content{.status = "Ready"}));
    statusItem.onCommand(Command::pause);
    EXPECT_EQ(statusItem.shown, (StatusItem::Content{.status = "Paused", .isPaused = true}));
    statusItem.onCommand(Command::resume);
    EXPECT_FALSE(statusItem.shown->isPaused);
    statusItem.onCommand(Command::settings);
    mainThread.advance(TimeInterval(1));
    EXPECT_TRUE(windows.isOpen(Window::settings));
    statusItem.onCommand(Command::quit);
    EXPECT_TRUE(terminated);
}

TEST_F(UnlockApplicationTest, startsALookWhenThePointerComesToTheIsland) {
    scanCamera->cameras = enrollmentCamera->cameras;
    setUpAll();
    lockScreen();
    const std::size_t lines = log.size();
    windowServer.movePointer({.x = 600, .y = 500});
    EXPECT_EQ(log.size(), lines);
    windowServer.movePointer({.x = 720, .y = 0});
    ASSERT_GT(log.size(), lines);
    EXPECT_EQ(log[lines], "Looking (hover)");
    settle();
    EXPECT_TRUE(scanCamera->isRunning());
    // A slow lock screen shows its field meanwhile.
    EXPECT_EQ(keyEvents.all<FakeKeyEvents::Note>(), std::vector{FakeKeyEvents::Note::fieldWoken});
}

TEST_F(UnlockApplicationTest, endsTheScanWhenWhatItNeedsIsGone) {
    struct Case {
        const char* name;
        std::function<void(UnlockModel&)> change;
    };
    const auto ignored = [](const auto& /*outcome*/) {};
    const Case cases[] = {
        {"the face is switched off",
         [&](UnlockModel& model) {
             model.setFaceEnabled(model.state().identities.at(0).id, false, ignored);
         }},
        {"the face is removed",
         [&](UnlockModel& model) { model.removeFace(model.state().identities.at(0).id, ignored); }},
        {"it is switched off",
         [](UnlockModel& model) {
             UnlockSettings settings = model.settings();
             settings.isEnabled = false;
             model.apply(std::move(settings));
         }},
        {"everything is erased", [](UnlockModel& model) { model.eraseEverything(); }},
    };
    scanCamera->cameras = enrollmentCamera->cameras;
    for (const Case& each : cases) {
        SCOPED_TRACE(each.name);
        application->model().eraseEverything();
        settle();
        start();
        setUpAll();
        lockScreen();
        windowServer.movePointer({.x = 720, .y = 500});
        windowServer.movePointer({.x = 720, .y = 0});
        ASSERT_EQ(log.back(), "Looking (hover)");
        each.change(application->model());
        mainThread.runPosted();
        EXPECT_EQ(log.back(), "Stood down (can’t unlock now)");
        lockState.setLocked(false);
        lockEvents.send(LockEvent::screenUnlocked);
        settle();
    }
}

TEST_F(UnlockApplicationTest, looksForNobodyDuringAPause) {
    setUpAll();
    ASSERT_TRUE(looksOnReturn());
    const auto looks = [this] {
        log.clear();
        return looksOnReturn();
    };
    EXPECT_EQ(tell({.verb = Command::Verb::pause, .minutes = 5}).text, "Paused for 5 minutes.");
    EXPECT_FALSE(looks());
    EXPECT_EQ(tell({.verb = Command::Verb::status}),
              (CommandReply{CommandReply::Status::no,
                            "Paused: The lock screen stays as it is until the pause is over."}));
    mainThread.advance(TimeInterval(300));
    settle();
    EXPECT_TRUE(looks());

    tell({.verb = Command::Verb::pause});
    mainThread.advance(TimeInterval(86400));
    EXPECT_FALSE(looks());
    reopen();
    EXPECT_TRUE(press("Resume"));
    EXPECT_TRUE(looks());
    EXPECT_EQ(tell({.verb = Command::Verb::resume}).text, "It was not paused.");
}

TEST_F(UnlockApplicationTest, saysWhyThereIsNoTrialLook) {
    const struct {
        const char* answer;
        std::function<void()> prepare;
    } cases[] = {
        {"Not set up yet.", [] {}},
        {"Needs Touch ID once this session.",
         [this] {
             setUpAll();
             start();
         }},
        {"The screen is locked: it looks for you by itself.",
         [this] {
             openVault();
             lockScreen();
         }},
        // It begins, and the lock comes.
        {"The screen was locked, which ended this look.",
         [this] {
             lockState.setLocked(false);
             lockEvents.send(LockEvent::screenUnlocked);
             scanCamera->cameras = enrollmentCamera->cameras;
         }},
    };
    for (const auto& [answer, prepare] : cases) {
        prepare();
        CommandReply reply;
        CommandReply second;
        const auto look = [&](CommandReply& into) {
            application->carryOut({.verb = Command::Verb::look},
                                  [&](const CommandReply& given) { into = given; });
        };
        look(reply);
        if (reply.text.empty()) {
            look(second);
            EXPECT_EQ(second.text, "A look is under way.");
            lockScreen();
        }
        EXPECT_EQ(reply.text, answer);
        EXPECT_EQ(reply.status, CommandReply::Status::no);
    }
}

TEST_F(UnlockApplicationTest, asksForTheKeyboardWhenSpaceIsSwitchedOnAndSaysWhereItIsAllowed) {
    constexpr const char* title = "Space isn’t heard";
    const auto isSaid = [this] {
        return std::ranges::any_of(windows.page().rows, [](const WindowRow& row) {
            const auto* status = std::get_if<WindowRow::Status>(&row);
            return status != nullptr && status->title == title;
        });
    };
    setUpAll();
    spaceKeys.hasAccess = false;
    reopen();
    EXPECT_FALSE(isSaid());
    EXPECT_TRUE(toggle("When you press Space", true));
    EXPECT_EQ(spaceKeys.requests, 1);
    EXPECT_TRUE(isSaid());
    EXPECT_TRUE(press("Open Settings…"));
    EXPECT_THAT(systemSettings.opened, ElementsAre(SystemSettings::Pane::inputMonitoring));
    spaceKeys.hasAccess = true;
    mainThread.advance(TimeInterval(2));
    EXPECT_FALSE(isSaid());
    EXPECT_TRUE(toggle("When you press Space", false) && toggle("When you press Space", true));
    EXPECT_EQ(spaceKeys.requests, 2) << "of the switch and of the button; nothing is left to ask";
}

TEST_F(UnlockApplicationTest, isNotSlowedDownFromLockToUnlock) {
    setUpAll();
    EXPECT_EQ(activities.held, 0);
    lockScreen();
    lockScreen();
    lockEvents.send(LockEvent::wake);
    settle();
    EXPECT_EQ(activities.held, 1);
    lockEvents.send(LockEvent::screenUnlocked);
    settle();
    EXPECT_EQ(activities.held, 0);
    lockScreen();
    application->willTerminate();
    EXPECT_EQ(activities.held, 0);
}

TEST_F(UnlockApplicationTest, savesNothingOfACaptureThatDidNotEnd) {
    struct Case {
        const char* problem;
        std::function<void()> breakIt;
    };
    const Case cases[] = {
        {"The camera stopped sending pictures.", [this] { mainThread.advance(TimeInterval(11)); }},
        {"The finder is out of order.",
         [this] {
             vision.rectanglesFault = "The finder is out of order.";
             see(0, 0);
             vision.rectanglesFault.reset();
         }},
        {"The screen was locked, so nothing was captured.", [this] { lockScreen(); }},
    };
    walkToCapture();
    for (const Case& one : cases) {
        hold(EnrollmentPose::center);
        EXPECT_GT(windows.row<WindowRow::Guide>()->progress, 0);
        one.breakIt();
        settle();
        EXPECT_EQ(windows.page().problem, one.problem);
        EXPECT_FALSE(press("Continue"));
        EXPECT_FALSE(enrollmentCamera->isRunning());
        EXPECT_TRUE(press("Try Again"));
        EXPECT_EQ(windows.row<WindowRow::Guide>()->progress, 0);
    }
    hold(EnrollmentPose::center);
    windows.closeByUser();
    settle();
    EXPECT_FALSE(enrollmentCamera->isRunning());
    EXPECT_TRUE(files.files().empty());
    EXPECT_EQ(enrollmentCamera->faults, std::vector<std::string>());
}

TEST_F(UnlockApplicationTest, keepsTheCapturedFaceUntilTheOwnerAndThePasswordAreRight) {
    walkToCapture();
    capture();
    nameAndPassword("");
    EXPECT_EQ(windows.page().problem, "The password is empty.");

    passwordVerifier.verdict = PasswordCheckResult::Incorrect{};
    windows.typeSecret("wrong");
    EXPECT_TRUE(press("Continue"));
    EXPECT_EQ(windows.page().problem, "That isn’t your Mac password.");

    passwordVerifier.verdict = PasswordCheckResult::Correct{};
    owner.answer = false;
    windows.typeSecret("secret");
    EXPECT_TRUE(press("Continue"));
    EXPECT_EQ(windows.page().problem, "Touch ID was cancelled, so nothing was saved.");
    EXPECT_TRUE(files.files().empty());

    owner.answer = true;
    EXPECT_TRUE(press("Continue"));
    EXPECT_EQ(windows.page().problem, "The password is empty.") << "nothing typed is kept";
    windows.typeSecret("secret");
    EXPECT_TRUE(press("Continue"));
    EXPECT_EQ(windows.page().title, "When should it look for you?");
    EXPECT_TRUE(application->model().state().isEnrolled);
}

TEST_F(UnlockApplicationTest, followsAPermissionGivenElsewhereAndAsksOnlyWhileAWindowIsOpen) {
    keyEvents.trusted = false;
    enrollmentCamera->answer = CaptureAuthorization::notDetermined;
    reopen();
    EXPECT_TRUE(press("Continue") && toggle("I understand", true) && press("Continue"));
    EXPECT_FALSE(press("Continue"));
    EXPECT_TRUE(press("Allow…"));
    EXPECT_EQ(windows.page().title, "Allow typing your password");
    EXPECT_TRUE(press("Open Settings…"));
    EXPECT_EQ(systemSettings.opened.size(), 1U);
    keyEvents.trusted = true;
    mainThread.advance(TimeInterval(2));
    EXPECT_EQ(windows.page().title, "Save your face");

    windows.closeByUser();
    mainThread.advance(TimeInterval(12));
    EXPECT_TRUE(mainThread.timers().empty());
}

TEST_F(UnlockApplicationTest, looksThroughAnotherCameraWhileTheChosenOneIsGone) {
    setUpAll();
    reopen();
    EXPECT_TRUE(windows.choose("Camera at an external display", "Desk camera"));
    enrollmentCamera->cameras = {{.description = {"lid", "Lid camera"}}};
    scanCamera->cameras = enrollmentCamera->cameras;
    const auto row = [this] {
        for (const WindowRow& each : windows.page().rows) {
            const auto* choice = std::get_if<WindowRow::Choice>(&each);
            if (choice != nullptr && choice->title == "Camera at an external display")
                return *choice;
        }
        return WindowRow::Choice();
    };
    EXPECT_EQ(row().detail, "The chosen camera isn’t connected. Until it is, another one looks.");
    EXPECT_EQ(row().options.at(row().selected), "The one chosen before");
    windows.presenter().choose(row().id, row().selected);
    EXPECT_EQ(application->model().settings().externalDisplayCameraID, "desk");

    windowServer.displays = {.hasBuiltIn = true, .hasExternal = true};
    EXPECT_TRUE(looksOnReturn());
    EXPECT_THAT(log,
                testing::Contains("The chosen camera isn’t connected: looking through Lid camera"));
    EXPECT_EQ(scanCamera->attached(), "lid");
}

TEST_F(UnlockApplicationTest, keepsWhatIsSetAndErasesWhatWasSaved) {
    setUpAll();
    reopen();
    EXPECT_TRUE(windows.choose("Look for", "8 seconds"));
    EXPECT_TRUE(windows.choose("How alike a face must be", "Strict"));
    EXPECT_TRUE(windows.choose("Camera at an external display", "Desk camera"));
    EXPECT_TRUE(windows.choose("Camera at the built-in display", "Desk camera"));
    EXPECT_TRUE(windows.choose("Camera at the built-in display", "Automatic"));
    EXPECT_TRUE(systemSettings.atLogin) << "unless switched off at the set-up";
    EXPECT_TRUE(toggle("Open at login", false));
    EXPECT_FALSE(systemSettings.atLogin);
    EXPECT_TRUE(toggle("When you press Space", true) && toggle("Open at login", true));
    const UnlockSettings stored = UnlockSettings::load(defaults);
    EXPECT_EQ(stored, application->model().settings());
    EXPECT_EQ(stored.scanSeconds, 8);
    EXPECT_EQ(stored.builtInDisplayCameraID, std::nullopt);
    EXPECT_EQ(stored.externalDisplayCameraID, "desk");
    EXPECT_TRUE(systemSettings.atLogin);

    lockEvents.fault = Phrase("Locks are not noticed.");
    reopen();
    EXPECT_EQ(windows.page().problem, "Locks are not noticed.");
    lockEvents.fault = {};
    reopen();
    EXPECT_EQ(windows.page().problem, "");

    EXPECT_TRUE(toggle("Unlock with your face", false));
    EXPECT_FALSE(application->model().state().vaultUnlocked);
    EXPECT_EQ(windows.row<WindowRow::Status>()->title, "Off");

    EXPECT_TRUE(press("Quit…"));
    EXPECT_THAT(windows.page().detail, HasSubstr("until you open it again from Applications."));
    EXPECT_TRUE(press("Cancel"));
    EXPECT_FALSE(terminated);
    files.deny("/data/Marrowby Unlock/Password.sealed");
    EXPECT_TRUE(press("Erase Everything…"));
    EXPECT_TRUE(windows.page().buttons.front().isDefault) << "Return presses Cancel";
    EXPECT_TRUE(press("Erase"));
    EXPECT_EQ(windows.page().problem, "Password: Input/output error");
    EXPECT_EQ(UnlockSettings::load(defaults).scanSeconds, 8) << "something is left";
    EXPECT_TRUE(systemSettings.atLogin && keyStore.key);
    files.heal();
    EXPECT_TRUE(press("Erase Everything…") && press("Erase"));
    EXPECT_EQ(UnlockSettings::load(defaults), UnlockSettings());
    EXPECT_FALSE(systemSettings.atLogin);
    EXPECT_TRUE(files.files().empty() && !keyStore.key);
    EXPECT_EQ(windows.row<WindowRow::Status>()->title, "Not set up yet");
    EXPECT_TRUE(press("Quit…") && press("Quit"));
    EXPECT_TRUE(terminated);
}

TEST_F(UnlockApplicationTest, saysWhatCannotBeOpenedAndWhatToDo) {
    const FakeFileSystem::Bytes damaged(64, 0x01);
    const struct {
        const char* status;
        const char* fix;
        std::function<void()> breakIt;
        const char* pageOfTheFix;
    } cases[] = {
        {"The saved Mac password can’t be read", "Save…",
         [&] { files.put("/data/Marrowby Unlock/Password.sealed", damaged); },
         "Update your Mac password"},
        {"The saved face can’t be read", "Erase…",
         [&] { files.put("/data/Marrowby Unlock/Faces.sealed", damaged); }, "Erase everything?"},
        {"The key to what was saved is gone", "Erase…", [&] { keyStore.key.reset(); },
         "Erase everything?"},
        {"Keychain can’t be used", "Use Touch ID…",
         [&] {
             keyStore.failing.emplace(FakeKeyStore::Operation::load,
                                      KeychainError(KeychainError::Status{7, {}}));
         },
         "Marrowby Unlock"},
        {"No camera found", "", [&] { enrollmentCamera->cameras.clear(); }, ""},
    };
    const auto cameras = enrollmentCamera->cameras;
    for (const auto& [status, fix, breakIt, pageOfTheFix] : cases) {
        SCOPED_TRACE(status);
        keyStore.failing.clear();
        enrollmentCamera->cameras = cameras;
        application->model().eraseEverything();
        settle();
        start();
        setUpAll();
        EXPECT_TRUE(application->model().status().isReady());
        breakIt();
        start();
        openVault();
        // A refusal changes nothing of what was found.
        owner.answer = false;
        openVault();
        owner.answer = true;
        application->carryOut({.verb = Command::Verb::settings}, [](const auto&) {});
        mainThread.advance(TimeInterval(1));
        settle();
        EXPECT_EQ(windows.row<WindowRow::Status>()->title, status);
        const auto button = windows.row<WindowRow::Status>()->fix;
        EXPECT_EQ(button ? button->title : "", fix);
        if (!button) continue;
        EXPECT_TRUE(press(button->title));
        EXPECT_EQ(windows.page().title, pageOfTheFix);
    }
}

TEST_F(UnlockApplicationTest, locksTheVaultOnTimeWhateverElseIsOff) {
    struct Case {
        const char* what;
        std::function<void()> prepare;
    };
    const Case cases[] = {
        {"nothing saved, so that the engine was never there", [] {}},
        {"all in order", [this] { setUpAll(); }},
        {"face unlock switched off",
         [this] {
             UnlockSettings settings = application->model().settings();
             settings.isEnabled = false;
             application->model().apply(settings);
         }},
        {"a key that couldn’t be erased",
         [this] {
             openVault();
             keyStore.failing.emplace(FakeKeyStore::Operation::remove,
                                      KeychainError::Status{.code = -25291, .message = {}});
             application->model().eraseEverything();
         }},
    };
    for (const Case& one : cases) {
        SCOPED_TRACE(one.what);
        one.prepare();
        const auto& state = application->model().state();
        openVault();
        ASSERT_TRUE(state.vaultUnlocked);
        const TimeInterval limit = *length(AutoLockInterval::week);
        mainThread.advance(limit - TimeInterval(1));
        EXPECT_TRUE(state.vaultUnlocked);
        mainThread.advance(TimeInterval(331));
        EXPECT_FALSE(state.vaultUnlocked);
        EXPECT_TRUE(mainThread.timers().empty()) << "a locked vault needs no watching";
    }
}

TEST_F(UnlockApplicationTest, looksForNobodyWithModelsThatDidNotSaveTheFace) {
    setUpAll();
    EXPECT_EQ(models.loads.front().options.sha256, "e") << "only what was summed up is loaded";
    EXPECT_TRUE(looksOnReturn());
    const ModelSums before = sums;
    for (const char* role : {"embedder", "realFace"}) {
        SCOPED_TRACE(role);
        sums = before;
        sums[role] = "another";
        start();
        reopen();
        EXPECT_TRUE(press("Use Touch ID…"));
        const auto status = windows.row<WindowRow::Status>();
        EXPECT_EQ(status->title, "The models changed since your face was saved");
        EXPECT_THAT(detailOf("Anna"), HasSubstr("not looked for"));
        EXPECT_FALSE(looksOnReturn());
    }

    EXPECT_TRUE(press("Capture Again…"));
    EXPECT_EQ(windows.page().title, "Save your face");
    capture();
    EXPECT_TRUE(windows.write("Anna again"));
    EXPECT_TRUE(press("Save"));
    EXPECT_TRUE(application->model().status().isReady());

    sums = before;
    start();
    openVault();
    EXPECT_TRUE(application->model().status().isReady()) << "the first models are back";
}

TEST_F(UnlockApplicationTest, takesFacesOfUnknownModelsOverOnlyForThePublishedOnes) {
    const ModelSums now = sums;
    sums = {};
    start();
    setUpAll();
    sums = now;
    start();
    openVault();
    EXPECT_EQ(application->model().status(), UnlockStatus(UnlockStatus::ModelsChanged{}));

    arePublished = true;
    start();
    openVault();
    EXPECT_TRUE(application->model().status().isReady());
    sums["embedder"] = "another";
    start();
    openVault();
    EXPECT_EQ(application->model().status(), UnlockStatus(UnlockStatus::ModelsChanged{}));
}

TEST_F(UnlockApplicationTest, removesTheLastFaceSoThatARestartKnows) {
    setUpAll();
    reopen();
    EXPECT_TRUE(press("Remove…"));
    EXPECT_EQ(windows.page().title, "Remove “Anna”?");
    EXPECT_TRUE(press("Remove"));
    EXPECT_FALSE(application->model().state().isEnrolled);
    start();
    EXPECT_FALSE(application->model().state().isEnrolled);
    EXPECT_TRUE(application->model().state().hasPassword);
}

TEST_F(UnlockApplicationTest, endsATrialWhenSomethingElseNeedsTheCamera) {
    setUpAll();
    scanCamera->cameras = enrollmentCamera->cameras;
    reopen();
    const struct {
        const char* reason;
        std::function<void()> end;
    } cases[] = {
        {"", [this] { windows.press("Done"); }},
        {"", [this] { windows.closeByUser(); }},
        {"What is saved was locked, which ended the trial.",
         [this] {
             UnlockSettings settings = application->model().settings();
             settings.isEnabled = false;
             application->model().apply(std::move(settings));
             mainThread.runPosted();
         }},
        {"A face is being captured, which ended the trial.",
         [this] { application->model().captureFace([](const auto&) {}); }},
        {"Another look began, which ended the trial.",
         [this] { application->carryOut({.verb = Command::Verb::look}, [](const auto&) {}); }},
        {"The screen was locked, which ended the trial.", [this] { lockScreen(); }},
    };
    for (const auto& [reason, end] : cases) {
        SCOPED_TRACE(reason);
        openVault();
        application->model().dropCapturedFace();
        ASSERT_TRUE(windows.press("Try It…"));
        ASSERT_EQ(windows.page().title, "Try it");
        end();
        if (!windows.isOpen(Window::settings)) reopen();
        EXPECT_EQ(windows.page().title, "Marrowby Unlock");
        EXPECT_EQ(windows.page().problem, reason);
        settle();
        mainThread.advance(TimeInterval(1));
        settle();
        EXPECT_FALSE(scanCamera->isRunning());
        EXPECT_TRUE(keyEvents.events.empty());
    }
    ASSERT_TRUE(windows.press("Try It…"));
    EXPECT_EQ(windows.page().problem, "The screen is locked: it looks for you by itself.");
}

TEST_F(UnlockApplicationTest, renamesAFaceAndCapturesItAnewWithoutLosingIt) {
    setUpAll();
    reopen();
    const auto face = [this] { return application->model().state().identities.at(0); };
    const FaceIdentity first = face();
    EXPECT_TRUE(press("Rename…"));
    EXPECT_TRUE(windows.write("  "));
    EXPECT_FALSE(press("Rename")) << "a face has a name";
    EXPECT_TRUE(windows.write("Anna, glasses") && press("Cancel"));
    EXPECT_EQ(face().name, "Anna");
    EXPECT_TRUE(press("Rename…") && windows.write("Anna, glasses") && press("Rename"));
    EXPECT_EQ(face().name, "Anna, glasses");

    EXPECT_TRUE(press("Capture Anew…"));
    EXPECT_EQ(windows.page().title, "Save your face");
    hold(EnrollmentPose::center);
    EXPECT_TRUE(windows.row<WindowRow::Guide>()->picture) << "shown inside the ring";
    windows.closeByUser();
    EXPECT_EQ(face().samples, first.samples) << "cancelled";

    models.answer = [](auto /*inputs*/) {
        return FakeNeuralModels::Outputs(
            std::vector{NeuralOutput{"embedding", std::vector(128, -0.1F)}});
    };
    for (const bool isDiskFull : {true, false}) {
        reopen();
        if (isDiskFull) files.deny("/data/Marrowby Unlock/Faces.sealed");
        EXPECT_TRUE(press("Capture Anew…"));
        capture();
        EXPECT_EQ(windows.row<WindowRow::TextField>()->text, "Anna, glasses");
        EXPECT_TRUE(press("Save"));
        files.heal();
        EXPECT_EQ(face().samples == first.samples, isDiskFull);
        if (isDiskFull) windows.closeByUser();
    }
    EXPECT_EQ(face().name, "Anna, glasses");
    EXPECT_EQ(face().id, first.id);
    EXPECT_EQ(application->model().state().identities.size(), 1U);
}

TEST_F(UnlockApplicationTest, trustsAPasswordSavedAnewWithoutARestart) {
    setUpAll();
    UnlockSettings settings = application->model().settings();
    settings.passwordHealth = {.failures = 2, .suspended = true, .needsNotice = false};
    application->model().apply(settings);
    reopen();
    EXPECT_TRUE(press("Update…"));
    EXPECT_EQ(windows.page().title, "Update your Mac password");
    windows.typeSecret("newer");
    EXPECT_TRUE(press("Save"));
    EXPECT_FALSE(windows.isOpen(Window::welcome));
    EXPECT_TRUE(application->model().status().isReady());
    EXPECT_EQ(UnlockSettings::load(defaults).passwordHealth, PasswordHealth());
}

/// Its desktop opens the lock when it is asked to.
class AskedDesktopTest : public UnlockApplicationTest {
  protected:
    AskedDesktopTest() {
        desktop = &asked;
        start();
    }
    /// From the first page to the question.
    void walkToConsent() {
        reopen();
        EXPECT_TRUE(press("Continue") && toggle("I understand", true) && press("Continue"));
        EXPECT_EQ(windows.page().title, "Allow the camera");
        EXPECT_TRUE(press("Continue"));
        capture();
        EXPECT_TRUE(windows.write("Anna"));
        EXPECT_TRUE(press("Continue"));
        EXPECT_EQ(windows.page().title, "Unlock without your password?");
    }
    void setUpAsking() {
        walkToConsent();
        EXPECT_TRUE(toggle("Yes, unlock without my password", true));
        EXPECT_TRUE(press("Continue") && press("Continue") && press("Done"));
    }
    [[nodiscard]] std::string everything() {
        const WindowPage page = windows.page();
        std::string text = page.title + page.detail;
        for (const WindowRow& row : page.rows) {
            if (const auto* said = std::get_if<WindowRow::Text>(&row)) text += said->text;
            if (const auto* action = std::get_if<WindowRow::Actions>(&row)) {
                for (const WindowButton& button : action->buttons)
                    text += button.title;
            }
            if (const auto* status = std::get_if<WindowRow::Status>(&row))
                text += status->title + status->detail;
            if (const auto* choice = std::get_if<WindowRow::Toggle>(&row)) text += choice->title;
        }
        return text;
    }

    FakeSessionUnlocking asked;
};

TEST_F(AskedDesktopTest, isSetUpByAYesAndAsksOnlyWhileThatStands) {
    walkToConsent();
    EXPECT_FALSE(press("Continue")) << "nothing was said";
    EXPECT_THAT(windows.page().detail, HasSubstr("second factor"));
    toggle("Yes, unlock without my password", true);
    owner.answer = false;
    EXPECT_TRUE(press("Continue"));
    EXPECT_FALSE(application->model().settings().asksDesktop);
    owner.answer = true;
    EXPECT_TRUE(press("Continue") && press("Continue") && press("Done"));
    EXPECT_TRUE(application->model().state().identities.size() == 1);
    EXPECT_FALSE(application->model().state().hasPassword);
    EXPECT_EQ(tell({.verb = Command::Verb::status}).status, CommandReply::Status::done);
    EXPECT_TRUE(looksOnReturn());
    EXPECT_TRUE(keyEvents.events.empty());

    reopen();
    EXPECT_THAT(everything(), Not(HasSubstr("Password…")));
    EXPECT_TRUE(toggle("Unlock without your password", false));
    EXPECT_EQ(windows.row<WindowRow::Status>()->title, "Needs your yes");
    log.clear();
    EXPECT_FALSE(looksOnReturn());
    // To say yes again, the question comes again; the face is there.
    EXPECT_TRUE(toggle("Unlock without your password", true));
    EXPECT_EQ(windows.front(), Window::welcome);
    EXPECT_FALSE(application->model().settings().asksDesktop);
}

TEST_F(AskedDesktopTest, wantsAPasswordWhereTheAccountComesBackToAnotherDesktop) {
    setUpAsking();
    asked.setOpening(LockOpening::typing);
    settle();
    EXPECT_EQ(application->model().status().title(*words), "Mac password not saved");
    log.clear();
    EXPECT_FALSE(looksOnReturn());
    // And back: nothing is asked again.
    asked.setOpening(LockOpening::asking);
    EXPECT_TRUE(application->model().status().isReady());
    asked.isKnown = false;
    asked.setOpening(LockOpening::asking);
    EXPECT_EQ(application->model().status().title(*words), "This session isn’t known");
}

TEST_F(AskedDesktopTest, saysOnTheFirstPageWhyItCannotUnlockHere) {
    for (const auto& [opening, reason] :
         {std::pair(LockOpening::unsupported, "a locker that ends while typing goes on"),
          std::pair(LockOpening::forbidden, "/etc/marrowby-unlock/policy.conf forbids")}) {
        SCOPED_TRACE(reason);
        application->model().eraseEverything();
        settle();
        asked.setOpening(LockOpening::asking);
        start();
        setUpAsking();
        // Whoever was set up before loses the unlock, not the way out.
        asked.setOpening(opening);
        settle();
        log.clear();
        EXPECT_FALSE(looksOnReturn());
        reopen();
        EXPECT_THAT(everything(), HasSubstr(reason));
        EXPECT_FALSE(press("Continue"));
        EXPECT_TRUE(press("Settings…"));
        mainThread.advance(TimeInterval(0.7));
        settle();
        EXPECT_EQ(windows.front(), Window::settings);
        EXPECT_THAT(everything(), HasSubstr(reason));
        EXPECT_TRUE(toggle("Unlock with your face", false));
        EXPECT_TRUE(press("Erase Everything…") && press("Erase"));
        EXPECT_TRUE(application->model().state().identities.empty());
        EXPECT_TRUE(press("Quit…") && press("Quit"));
        EXPECT_TRUE(std::exchange(terminated, false));
    }
}

}  // namespace
}  // namespace marrowby
