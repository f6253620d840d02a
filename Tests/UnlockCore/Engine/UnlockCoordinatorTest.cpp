// SPDX-License-Identifier: Apache-2.0
#include "Tests/Fakes/FakeMainThread.h"
#include "Tests/Fakes/FakePresenting.h"
#include "Tests/Fakes/FakeScreenLock.h"
#include "UnlockCore/Engine/SystemUnlockClock.h"
#include "UnlockCore/Engine/UnlockCoordinator.h"

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace marrowby {
namespace {

using Event = UnlockCoordinator::Event;
using Calls = std::vector<std::string>;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

/// Listens for Space or watches activity, or both.
class NotingListener final : public SpaceKeyListening, public ActivityWatching {
  public:
    NotingListener(Calls& calls, std::string name) : calls_(calls), name_(std::move(name)) {}
    bool isOn = false;

    void start() override { turn(true); }
    void stop() override { turn(false); }

  private:
    void turn(bool on) {
        calls_.push_back(name_ + (on ? " on" : " off"));
        isOn = on;
    }
    Calls& calls_;
    const std::string name_;
};

class NotingScanner final : public FaceScanning {
  public:
    explicit NotingScanner(Calls& calls) : calls_(calls) {}
    std::optional<std::string> failsAtOnceWith;
    ScanID look{};
    ScanConfiguration configuration;
    Callbacks callbacks;

    void start(ScanID id, const ScanConfiguration& scan, Callbacks told) override {
        calls_.push_back("startCamera " + std::to_string(static_cast<std::int64_t>(id)));
        look = id;
        configuration = scan;
        callbacks = std::move(told);
        if (failsAtOnceWith) callbacks.onCameraFailed(*failsAtOnceWith);
    }
    void stop() override { calls_.emplace_back("stopCamera"); }

  private:
    Calls& calls_;
};

class NotingTyper final : public PasswordTyping {
  public:
    explicit NotingTyper(Calls& calls) : calls_(calls) {}
    std::function<bool()> stillLocked;
    std::function<void(TypingOutcome)> complete;

    void typeStoredPassword(std::function<bool()> isStillLocked,
                            std::function<void(TypingOutcome)> completion) override {
        calls_.emplace_back("typePassword");
        stillLocked = std::move(isStillLocked);
        complete = std::move(completion);
    }

  private:
    Calls& calls_;
};

/// A coordinator among fakes, all of which write down what they are told, in one list.
class UnlockCoordinatorTest : public testing::Test {
  protected:
    UnlockCoordinatorTest() {
        presenter.onCall = [this](std::string call) { calls.push_back(std::move(call)); };
        readiness.isEnabled = readiness.showsUI = readiness.vaultUnlocked = true;
        readiness.passwordSaved = readiness.accessibilityTrusted = readiness.spaceKeyAccess = true;
        readiness.triggers = {UnlockTrigger::onReturn, UnlockTrigger::onSpace};
        readiness.scanDuration = TimeInterval(5);
        robin.name = "Robin";
        robin.samples.resize(1);
        readiness.camera = {.builtInDisplayCameraID = "lid", .externalDisplayCameraID = "desk"};
        readiness.scan = {.cameraID = {},
                          .identities = facesOf({robin}),
                          .threshold = 0.58F,
                          .livenessMode = LivenessMode::strict};
        lockState.setLocked(true);
        coordinator = makeCoordinator(&presenter);
    }

    std::unique_ptr<UnlockCoordinator> makeCoordinator(UnlockCoordinator::Presenting* island) {
        auto made = std::make_unique<UnlockCoordinator>(
            PasswordHealth(), UnlockCoordinator::Collaborators{lockState, scanner, typer, island,
                                                               spaceKeys, activity, clock,
                                                               [this] {
                                                                   ++readinessAsked;
                                                                   return readiness;
                                                               },
                                                               [this] { return displays; }});
        made->setCallbacks({.onHealthChange = [this](const PasswordHealth& h) { health = h; },
                            .onAskToUpdatePassword = [this] { ++asked; },
                            .onLog = [this](const LogLine& line) { calls.push_back(line.text()); },
                            .onChange = [this] { calls.emplace_back("changed"); }});
        return made;
    }

    static EnrolledFaces facesOf(std::vector<FaceIdentity> faces) {
        return std::make_shared<const std::vector<FaceIdentity>>(std::move(faces));
    }
    Calls takeCalls() { return std::exchange(calls, {}); }
    Calls callsOf(Event event) {
        calls.clear();
        coordinator->send(std::move(event));
        return takeCalls();
    }
    void seesRobin() {
        scanner.callbacks.onFrame(scanner.look,
                                  ScanObservation::Face{MatchedFace{UUID(), "Robin", 0.7F},
                                                        LivenessDecision::Confirmed{}});
    }
    /// A face that is not known to be alive yet.
    void seesSomebody() {
        scanner.callbacks.onFrame(
            scanner.look,
            ScanObservation::Face{MatchedFace{UUID(), "Robin", 0.7F}, LivenessDecision::Waiting{}});
    }
    void startScan() {
        coordinator->send(Event::Lock{LockEvent::screenLocked});
        coordinator->send(Event::Activate{});
        calls.clear();
    }
    void typePassword() {
        coordinator->send(Event::Lock{LockEvent::screenLocked});
        coordinator->send(Event::Activate{});
        seesRobin();
    }
    [[nodiscard]] TimeInterval untilDeadline() const {
        const auto timers = main.timers();
        EXPECT_EQ(timers.size(), 1U);
        return timers.empty() ? TimeInterval() : timers.front().fireDate - main.now();
    }

    Calls calls;
    UnlockReadiness readiness;
    /// How often that was asked for.
    int readinessAsked = 0;
    ActiveDisplays displays{.hasBuiltIn = true};
    FaceIdentity robin;
    PasswordHealth health;
    int asked = 0;
    FakeMainThread main;
    SystemUnlockClock clock{main, main};
    FakeLockState lockState;
    NotingScanner scanner{calls};
    NotingTyper typer{calls};
    FakePresenting presenter;
    NotingListener spaceKeys{calls, "listenForSpace"};
    NotingListener activity{calls, "watchActivity"};
    std::unique_ptr<UnlockCoordinator> coordinator;
};

TEST_F(UnlockCoordinatorTest, looksThroughTheCameraOfTheDisplaysAtTheStartOfALook) {
    const ActiveDisplays unknown;
    const ActiveDisplays lid{.hasBuiltIn = true};
    const ActiveDisplays docked{.hasExternal = true};
    const ActiveDisplays both{.hasBuiltIn = true, .hasExternal = true};
    for (const auto& [active, camera] : {std::pair(unknown, "lid"), std::pair(lid, "lid"),
                                         std::pair(docked, "desk"), std::pair(both, "desk")}) {
        displays = {};
        coordinator = makeCoordinator(nullptr);
        coordinator->send(Event::Lock{LockEvent::screenLocked});
        displays = active;
        coordinator->send(Event::Activate{});
        EXPECT_EQ(scanner.configuration.cameraID, camera);
    }
    calls.clear();
    scanner.callbacks.onOtherCamera("Lid camera");
    EXPECT_THAT(takeCalls(),
                ElementsAre("The chosen camera isn’t connected: looking through Lid camera"));
}

TEST_F(UnlockCoordinatorTest, carriesOutAWholeUnlock) {
    EXPECT_THAT(callsOf(Event::Lock{LockEvent::screenLocked}),
                ElementsAre("Locked: waiting for you to come back", "overlay closed",
                            "listenForSpace on", "watchActivity on", "changed"));
    EXPECT_THAT(main.timers(), IsEmpty());
    EXPECT_THAT(callsOf(Event::SpaceKey{}),
                ElementsAre("overlay scanning", "startCamera 1", "Looking (space)", "changed"));
    EXPECT_EQ(scanner.configuration.cameraID, "lid");
    EXPECT_EQ(scanner.configuration.identities, readiness.scan.identities);
    seesRobin();
    EXPECT_THAT(takeCalls(), ElementsAre("stopCamera", "overlay success", "typePassword",
                                         "Recognised Robin", "changed"));
    EXPECT_TRUE(typer.stillLocked());
    EXPECT_THAT(main.timers(), IsEmpty());
    typer.complete(TypingOutcome::Typed{});
    EXPECT_EQ(untilDeadline(), UnlockMachine::passwordCheckDelay);
    lockState.setLocked(false);
    EXPECT_FALSE(typer.stillLocked());
    EXPECT_THAT(callsOf(Event::Lock{LockEvent::screenUnlocked}),
                ElementsAre("Unlocked", "overlay leaving", "listenForSpace off",
                            "watchActivity off", "changed"));
    EXPECT_THAT(main.timers(), IsEmpty());
}

TEST_F(UnlockCoordinatorTest, logsWhenAnUnlockTookEachStep) {
    const TimeInterval step(0.125);
    coordinator->send(Event::Lock{LockEvent::screenLocked});
    coordinator->send(Event::SpaceKey{});
    main.advance(step);
    scanner.callbacks.onFrame(scanner.look, ScanObservation::NoFace{});
    main.advance(step);
    seesSomebody();
    main.advance(step);
    seesRobin();
    main.advance(step);
    const Date firstKeyAt = clock.now();
    main.advance(step);
    EXPECT_THAT(callsOf(Event::Typed{TypingOutcome::Typed{firstKeyAt}}),
                Contains("Milliseconds since the return: camera-asked=0 first-picture=125 "
                         "first-face=250 first-match=250 confirmed=375 first-key=500 typed=625"));
}

TEST_F(UnlockCoordinatorTest, whatAnEffectCausesIsHandledAfterItsEvent) {
    coordinator->send(Event::Lock{LockEvent::screenLocked});
    scanner.failsAtOnceWith = "The camera is in use.";
    EXPECT_THAT(
        callsOf(Event::Activate{}),
        ElementsAre("overlay scanning", "startCamera 1", "Looking (hover)", "changed", "stopCamera",
                    "overlay failure: Camera unavailable", "Camera unavailable", "changed"));
    EXPECT_EQ(presenter.shown, OverlayPhase(OverlayPhase::Failure{
                                   UnlockFailure::CameraUnavailable{"The camera is in use."}}));
    EXPECT_EQ(untilDeadline(), UnlockMachine::failureHold);
}

TEST_F(UnlockCoordinatorTest, wakesTheMachineAtEachDeadlineWithoutPolling) {
    coordinator->send(Event::Lock{LockEvent::screenLocked});
    coordinator->send(Event::Activate{});
    EXPECT_THAT(main.timers(), ElementsAre(FakeMainThread::Scheduled{
                                   main.now() + TimeInterval(5), TimeInterval(0.05), {}}));
    main.jump(TimeInterval(-3600));
    EXPECT_THAT(callsOf(Event::Tick{}), ElementsAre("changed")) << "a tick before its time";
    EXPECT_EQ(untilDeadline(), TimeInterval(3605));
    main.jump(TimeInterval(7200));
    calls.clear();
    main.advance(TimeInterval(0));
    EXPECT_THAT(takeCalls(), ElementsAre("stopCamera", "Stopped looking: no answer in time",
                                         "overlay closed", "changed"));
    EXPECT_THAT(main.timers(), IsEmpty());
}

TEST_F(UnlockCoordinatorTest, aFrameWithoutEffectsReadsNothingAndSharesTheFaces) {
    startScan();
    EXPECT_EQ(scanner.configuration.identities.get(), readiness.scan.identities.get());
    const int reads = lockState.reads();
    const int askedBefore = readinessAsked;
    for (int frame = 0; frame < 10; ++frame)
        seesSomebody();
    EXPECT_EQ(lockState.reads(), reads);
    EXPECT_EQ(readinessAsked, askedBefore);
    EXPECT_EQ(main.timers().size(), 1U);
    seesRobin();
    EXPECT_EQ(lockState.reads(), reads + 1) << "typing is decided on a lock read for it";
    EXPECT_EQ(readinessAsked, askedBefore + 1);
}

/// Between two frames of a scan something changes that nobody tells the coordinator of.
TEST_F(UnlockCoordinatorTest, typesOnlyOnWhatHoldsWhenItIsDecided) {
    struct Case {
        const char* name;
        std::function<void()> change;
        Calls calls;
    };
    const std::string off = "listenForSpace off";
    const std::string unwatched = "watchActivity off";
    const Case cases[] = {
        {"the lock is gone",
         [this] { lockState.setLocked(false); },
         {"stopCamera", "overlay leaving", off, unwatched, "changed"}},
        {"the vault is locked",
         [this] { readiness.vaultUnlocked = false; },
         {"stopCamera", "stopCamera", "overlay hidden", "Stood down (refused: vaultLocked)", off,
          unwatched, "changed"}},
        {"the password is erased",
         [this] { readiness.passwordSaved = false; },
         {"stopCamera", "stopCamera", "overlay hidden", "Stood down (refused: noPassword)", off,
          unwatched, "changed"}},
        {"it is switched off",
         [this] { readiness.isEnabled = false; },
         {"stopCamera", "stopCamera", "overlay hidden", "Stood down (refused: off)", off, unwatched,
          "changed"}},
        {"it may not type any more",
         [this] { readiness.accessibilityTrusted = false; },
         {"stopCamera", "overlay failure: Needs permission", "Needs permission", "changed"}},
    };
    const UnlockReadiness allThere = readiness;
    for (const Case& each : cases) {
        SCOPED_TRACE(each.name);
        readiness = allThere;
        lockState.setLocked(true);
        coordinator = makeCoordinator(&presenter);
        startScan();
        seesSomebody();
        calls.clear();
        each.change();
        seesRobin();
        EXPECT_EQ(takeCalls(), each.calls);
    }
}

TEST_F(UnlockCoordinatorTest, followsWhatChangesDuringAScan) {
    startScan();
    seesSomebody();
    robin.isEnabled = false;
    readiness.scan.identities = facesOf({robin});
    EXPECT_THAT(callsOf(Event::SettingsChanged{}),
                ElementsAre("stopCamera", "overlay hidden", "Stood down (can’t unlock now)",
                            "listenForSpace off", "watchActivity off", "changed"));

    robin.isEnabled = true;
    readiness.scan.identities = facesOf({robin});
    coordinator = makeCoordinator(&presenter);
    startScan();
    lockState.setLocked(false);
    seesSomebody();
    EXPECT_THAT(takeCalls(), ElementsAre("changed")) << "nobody told of the unlock";
    main.jump(UnlockCoordinator::longestReadingAge);
    seesSomebody();
    EXPECT_THAT(takeCalls(), ElementsAre("stopCamera", "overlay leaving", "listenForSpace off",
                                         "watchActivity off", "changed"));
}

TEST_F(UnlockCoordinatorTest, suspendsTypingAndAsksAtTheNextUnlock) {
    for (int attempt = 0; attempt < 2; ++attempt) {
        typePassword();
        typer.complete(TypingOutcome::Typed{});
        main.advance(TimeInterval(10));
    }
    EXPECT_EQ(health, (PasswordHealth{2, true, true}));
    EXPECT_FALSE(spaceKeys.isOn || activity.isOn);
    lockState.setLocked(false);
    coordinator->send(Event::Lock{LockEvent::screenUnlocked});
    EXPECT_EQ(asked, 1);
    EXPECT_EQ(health, (PasswordHealth{2, true, false}));

    lockState.setLocked(true);
    coordinator->send(Event::Lock{LockEvent::screenLocked});
    EXPECT_FALSE(spaceKeys.isOn);
    coordinator->replacePasswordHealth({});
    EXPECT_TRUE(spaceKeys.isOn && activity.isOn);
}

TEST_F(UnlockCoordinatorTest, onlyAnEnabledFaceWithSamplesCounts) {
    robin.isEnabled = false;
    readiness.scan.identities = facesOf({robin});
    coordinator->send(Event::Lock{LockEvent::screenLocked});
    EXPECT_FALSE(activity.isOn);
    robin.isEnabled = true;
    robin.samples.clear();
    readiness.scan.identities = facesOf({robin});
    coordinator->send(Event::SettingsChanged{});
    EXPECT_FALSE(activity.isOn);
    FaceIdentity sam;
    sam.samples.resize(1);
    readiness.scan.identities = facesOf({robin, sam});
    coordinator->send(Event::SettingsChanged{});
    EXPECT_TRUE(activity.isOn);
}

TEST_F(UnlockCoordinatorTest, lateCallbacksFindItGone) {
    typePassword();
    const auto scannerCallbacks = scanner.callbacks;
    typer.complete(TypingOutcome::Typed{});
    calls.clear();
    coordinator.reset();
    EXPECT_THAT(main.timers(), IsEmpty());
    scannerCallbacks.onFrame(ScanID{1}, ScanObservation::NoFace{});
    scannerCallbacks.onCameraFailed("Gone.");
    typer.complete(TypingOutcome::Typed{});
    EXPECT_TRUE(typer.stillLocked());
    EXPECT_THAT(takeCalls(), IsEmpty());
}

TEST_F(UnlockCoordinatorTest, worksWithoutAnIslandAndWithoutListeners) {
    coordinator = makeCoordinator(nullptr);
    coordinator->setCallbacks({});
    EXPECT_NO_FATAL_FAILURE(typePassword());
    EXPECT_THAT(takeCalls(), ElementsAre("listenForSpace on", "watchActivity on", "startCamera 1",
                                         "stopCamera", "typePassword"));
}

}  // namespace
}  // namespace marrowby
