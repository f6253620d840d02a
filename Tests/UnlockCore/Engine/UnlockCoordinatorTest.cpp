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
    LookID look{};
    ScanConfiguration configuration;
    Callbacks callbacks;

    void start(LookID id, const ScanConfiguration& scan, Callbacks told) override {
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
        FaceIdentity robin;
        robin.name = "Robin";
        robin.samples.resize(1);
        readiness.scan = {.cameraID = "desk",
                          .identities = {robin},
                          .threshold = 0.58F,
                          .livenessMode = LivenessMode::strict};
        lockState.setLocked(true);
        coordinator = makeCoordinator(&presenter);
    }

    std::unique_ptr<UnlockCoordinator> makeCoordinator(UnlockCoordinator::Presenting* island) {
        auto made = std::make_unique<UnlockCoordinator>(
            PasswordHealth(),
            UnlockCoordinator::Collaborators{lockState, scanner, typer, island, spaceKeys, activity,
                                             clock, [this] { return readiness; }});
        made->setCallbacks({.onHealthChange = [this](const PasswordHealth& h) { health = h; },
                            .onAskToUpdatePassword = [this] { ++asked; },
                            .onLog = [this](const LogLine& line) { calls.push_back(line.text()); },
                            .onChange = [this] { calls.emplace_back("changed"); }});
        return made;
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

TEST_F(UnlockCoordinatorTest, carriesOutAWholeUnlock) {
    EXPECT_THAT(callsOf(Event::Lock{LockEvent::screenLocked}),
                ElementsAre("Locked: waiting for you to come back", "overlay closed",
                            "listenForSpace on", "watchActivity on", "changed"));
    EXPECT_THAT(main.timers(), IsEmpty());
    EXPECT_THAT(callsOf(Event::SpaceKey{}),
                ElementsAre("overlay scanning", "startCamera 1", "Looking (space)", "changed"));
    EXPECT_EQ(scanner.configuration.cameraID, "desk");
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
    FaceIdentity& robin = readiness.scan.identities.front();
    robin.isEnabled = false;
    coordinator->send(Event::Lock{LockEvent::screenLocked});
    EXPECT_FALSE(activity.isOn);
    robin.isEnabled = true;
    robin.samples.clear();
    coordinator->send(Event::SettingsChanged{});
    EXPECT_FALSE(activity.isOn);
    readiness.scan.identities.emplace_back().samples.resize(1);
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
    scannerCallbacks.onFrame(LookID{1}, ScanObservation::NoFace{});
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
