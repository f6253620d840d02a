#include "Tests/Fakes/EffectText.h"
#include "UnlockCore/Engine/UnlockMachine.h"

#include <source_location>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace marrowby {
namespace {

using Event = UnlockMachine::Event;
using Effects = std::vector<std::string>;

const Event locked = Event::Lock{LockEvent::screenLocked};
const Event unlocked = Event::Lock{LockEvent::screenUnlocked};
const Event sleeps = Event::Lock{LockEvent::willSleep};
const Event wakes = Event::Lock{LockEvent::wake};
const Event space = Event::SpaceKey{};
const Event hover = Event::Activate{};
const Event settings = Event::SettingsChanged{};
const Event tick = Event::Tick{};
const Event typed = Event::Typed{TypingOutcome::Typed{}};

const LivenessDecision live = LivenessDecision::Confirmed{};
const LivenessDecision undecided = LivenessDecision::Waiting{LivenessNeeds::realFace};
const LivenessDecision wantsTurn = LivenessDecision::Waiting{LivenessNeeds::headTurn};
const LivenessDecision wantsBoth = LivenessDecision::Waiting{{3}};

LivenessDecision denied(LivenessCue cue) {
    return LivenessDecision::Denied{cue};
}

/// A machine and its world, told as a story: time passes, something changes, an event comes, and
/// these are its effects, in order. Everything is set up; one trigger, coming back, is chosen.
class UnlockMachineTest : public testing::Test {
  protected:
    UnlockMachineTest() {
        world.now = Date(TimeInterval(700'000'000));
        world.isLocked = true;
        world.isEnabled = true;
        world.triggers = {UnlockTrigger::onReturn};
        world.showsUI = true;
        world.scanDuration = TimeInterval(5);
        world.vaultUnlocked = true;
        world.passwordSaved = true;
        world.hasFace = true;
        world.accessibilityTrusted = true;
        world.spaceKeyAccess = true;
    }

    void expect(const Event& event, const Effects& effects,
                std::source_location where = std::source_location::current()) {
        EXPECT_EQ(texts(machine.handle(event, world)), effects) << "line " << where.line();
    }
    /// The event that `expect` would check, where the story is not about it.
    void happens(const Event& event) { (void)machine.handle(event, world); }
    void after(double seconds) { world.now += TimeInterval(seconds); }
    void expectPhase(const char* phase,
                     std::source_location where = std::source_location::current()) {
        EXPECT_EQ(text(machine.phase()), phase) << "line " << where.line();
    }

    /// Locked long ago and armed, with activity watched.
    void arm() {
        happens(locked);
        after(60);
        expectPhase("armed");
    }
    /// A look by hover from the armed machine.
    void look() {
        arm();
        happens(hover);
        expectPhase("scanning");
    }
    /// A face accepted and its password typed.
    void typePassword() {
        look();
        happens(sees(live));
        happens(typed);
        expectPhase("verifying");
    }

    [[nodiscard]] Event activity(double quietFor = 60) const {
        return Event::Activity{{world.now, TimeInterval(quietFor)}};
    }
    [[nodiscard]] LookID currentLook() const {
        const auto* scanning = std::get_if<UnlockMachine::Phase::Scanning>(&machine.phase());
        return scanning != nullptr ? scanning->scan.id : LookID{};
    }
    [[nodiscard]] Event sees(LivenessDecision decision, const char* name = "Robin") const {
        return Event::Frame{currentLook(),
                            ScanObservation::Face{MatchedFace{UUID(), name, 0.7F}, decision}};
    }
    [[nodiscard]] Event seesStranger(LivenessDecision decision = undecided) const {
        return Event::Frame{currentLook(), ScanObservation::Face{std::nullopt, decision}};
    }
    [[nodiscard]] Event seesNobody() const {
        return Event::Frame{currentLook(), ScanObservation::NoFace{}};
    }

    UnlockSnapshot world;
    UnlockMachine machine{{}, {UnlockTrigger::onReturn}};
};

const Effects failedToRecognise{"stopCamera", "overlay failure: Not recognised",
                                "log: Not recognised"};
const Effects nobodyInTime{"stopCamera", "log: Stopped looking: no answer in time",
                           "overlay closed"};

TEST_F(UnlockMachineTest, fromLockToUnlockByAWake) {
    expect(locked,
           {"log: Locked: waiting for you to come back", "overlay closed", "watchActivity on"});
    after(10);
    world.isSleeping = true;
    expect(sleeps, {"watchActivity off"});
    after(600);
    world.isSleeping = false;
    expect(wakes, {"overlay scanning", "startCamera 1", "log: Looking (wake)", "watchActivity on"});
    EXPECT_EQ(machine.nextDeadline(), world.now + TimeInterval(5));
    after(0.3);
    expect(seesNobody(), {});
    expect(sees(undecided), {});
    after(0.3);
    expect(sees(live), {"stopCamera", "overlay success", "typePassword", "log: Recognised Robin"});
    EXPECT_EQ(machine.nextDeadline(), std::nullopt);
    after(0.2);
    expect(typed, {"log: Typed the password and Return"});
    EXPECT_EQ(machine.nextDeadline(), world.now + TimeInterval(4));
    after(1);
    world.isLocked = false;
    expect(unlocked, {"health 0", "log: Unlocked", "overlay leaving", "watchActivity off"});
    EXPECT_EQ(text(machine.overlay()), "hidden");
    expect(unlocked, {});
    expect(tick, {});
}

TEST_F(UnlockMachineTest, lockingArmsOnlyAMachineThatCanAct) {
    const Effects onlyLogged{"log: Locked: waiting for you to come back"};
    for (bool UnlockSnapshot::* const need :
         {&UnlockSnapshot::isEnabled, &UnlockSnapshot::vaultUnlocked,
          &UnlockSnapshot::passwordSaved, &UnlockSnapshot::hasFace}) {
        world.*need = false;
        for (const Event& event : {wakes, space, hover, activity()})
            expect(event, {});
        expect(locked, onlyLogged);
        expectPhase("idle");
        world.*need = true;
    }
    world.isSleeping = true;
    expect(locked, onlyLogged);
    for (const Event& event : {wakes, activity(), hover})
        expect(event, {});
    world.isSleeping = false;
    expect(hover, {"watchActivity on"});  // Not from idle.
    expect(locked, {"log: Locked: waiting for you to come back", "overlay closed"});
}

TEST_F(UnlockMachineTest, wakesRightAfterTheLockOrAnotherWakeAreIgnored) {
    happens(locked);
    after(1.9);
    expect(wakes, {});
    after(0.1);
    expect(wakes, {"overlay scanning", "startCamera 1", "log: Looking (wake)"});
    expect(sleeps, {"stopCamera", "overlay closed"});
    after(1.9);
    expect(wakes, {});
    after(0.1);
    expect(wakes, {"overlay scanning", "startCamera 2", "log: Looking (wake)"});
    after(3);
    expect(wakes, {});  // A look runs already.
    after(2);
    expect(tick, nobodyInTime);
    world.triggers = {UnlockTrigger::onSpace};
    expect(wakes, {"listenForSpace on", "watchActivity off"});  // Accepted, but must not look.
    world.triggers = {UnlockTrigger::onReturn};
    expect(wakes, {"listenForSpace off", "watchActivity on"});

    // A new lock, and sleep at once: the wake counts however soon it comes.
    world.isLocked = false;
    happens(unlocked);
    world.isLocked = true;
    happens(locked);
    after(0.5);
    happens(sleeps);
    after(0.5);
    expect(wakes, {"overlay scanning", "startCamera 3", "log: Looking (wake)"});

    // The same where it slept already when it was locked.
    world.isLocked = false;
    happens(unlocked);
    world.isLocked = world.isSleeping = true;
    happens(locked);
    after(0.5);
    world.isSleeping = false;
    expect(wakes, {"overlay closed", "overlay scanning", "startCamera 4", "log: Looking (wake)",
                   "watchActivity on"});
}

TEST_F(UnlockMachineTest, aMissedLockIsMadeUpForByTheWake) {
    expect(wakes, {"overlay closed", "overlay scanning", "startCamera 1", "log: Looking (wake)",
                   "watchActivity on"});
    after(5);
    expect(tick, nobodyInTime);
    after(2);
    expect(activity(), {"overlay scanning", "startCamera 2", "log: Looking (activity)"});
}

TEST_F(UnlockMachineTest, activityMustBeAReturn) {
    happens(locked);
    after(1.9);
    expect(activity(), {"log: Activity ignored: too soon after the lock or the last look"});
    after(5);
    expect(activity(0.9), {});  // Logged once for one lock.
    expect(activity(1.0), {"overlay scanning", "startCamera 1", "log: Looking (activity)"});
    expect(activity(), {});
    expect(space, {});
    expect(hover, {});
    after(5);
    expect(tick, nobodyInTime);
    after(3);
    expect(activity(0.2), {"log: Activity ignored: no quiet moment before it"});
    expect(activity(0.2), {});
    world.isSleeping = true;
    expect(activity(), {"watchActivity off"});
    world.isSleeping = false;
    world.triggers = {};
    expect(activity(), {});

    // Nobody told of this lock: there is no fence to measure from, and nothing to log it for.
    machine = UnlockMachine({}, {});
    world.triggers = {UnlockTrigger::onReturn};
    expect(activity(), {"watchActivity on"});
    expectPhase("idle");
}

TEST_F(UnlockMachineTest, activityStopsAfterThreeLooksAtNobody) {
    arm();
    const auto lookAtNobody = [&](const char* startCamera) {
        after(3);
        expect(activity(), {"overlay scanning", startCamera, "log: Looking (activity)"});
        happens(seesNobody());
        after(5);
        expect(tick, nobodyInTime);
    };
    const Effects tired{"log: Activity ignored: 3 looks in a row saw nobody"};
    lookAtNobody("startCamera 1");
    lookAtNobody("startCamera 2");
    lookAtNobody("startCamera 3");
    after(3);
    expect(activity(), tired);
    expect(activity(), {});

    // Any other look counts anew, even one that sees nobody either.
    expect(hover, {"overlay scanning", "startCamera 4", "log: Looking (hover)"});
    after(5);
    happens(tick);
    lookAtNobody("startCamera 5");
    lookAtNobody("startCamera 6");

    // So does a look that saw a face, whatever became of it.
    after(3);
    happens(activity());
    happens(seesStranger());
    after(5);
    expect(tick, nobodyInTime);
    lookAtNobody("startCamera 8");
    lookAtNobody("startCamera 9");
    after(3);
    happens(activity());
    happens(sees(denied(LivenessCue::moire)));
    after(5);
    lookAtNobody("startCamera 11");
    lookAtNobody("startCamera 12");
    lookAtNobody("startCamera 13");

    // A camera that fails without having seen anything is no such look.
    after(3);
    expect(activity(), tired);
    happens(locked);
    lookAtNobody("startCamera 14");
    lookAtNobody("startCamera 15");
    after(3);
    happens(activity());
    expect(Event::CameraFailed{"Unplugged."},
           {"stopCamera", "overlay failure: Camera unavailable", "log: Camera unavailable"});
    lookAtNobody("startCamera 17");
    after(3);
    expect(activity(), tired);
}

TEST_F(UnlockMachineTest, spaceLooksWhereItIsChosen) {
    happens(locked);
    expect(space, {});
    world.triggers = {UnlockTrigger::onSpace};
    world.spaceKeyAccess = false;
    expect(settings, {"watchActivity off"});
    world.spaceKeyAccess = true;
    expect(settings, {"listenForSpace on"});
    expect(space, {"overlay scanning", "startCamera 1", "log: Looking (space)"});  // At any time.
    world.isEnabled = false;
    expect(settings, {"stopCamera", "overlay hidden", "log: Stood down (can’t unlock now)",
                      "listenForSpace off"});
    expect(space, {});
    world.isEnabled = true;
    world.isSleeping = true;
    expect(space, {"overlay scanning", "startCamera 2", "log: Looking (space)",
                   "listenForSpace on"});  // From idle; asleep or not.
}

TEST_F(UnlockMachineTest, aLookLastsAsLongAsChosenButNeverLessThanASecond) {
    for (const double chosen : {0.0, -3.0, 0.5, 1.0, 8.0}) {
        machine = UnlockMachine({}, {});
        world.scanDuration = TimeInterval(chosen);
        look();
        after(std::max(1.0, chosen) - 0.01);
        expect(tick, {});
        expect(seesNobody(), {});
        after(0.02);
        expect(seesNobody(), nobodyInTime);  // A late frame ends it as a tick does.
    }
}

TEST_F(UnlockMachineTest, aStrangerMayStayTwoSeconds) {
    look();
    expect(seesStranger(), {});
    after(1.9);
    expect(seesStranger(live), {});
    expect(sees(undecided), {});  // Restarts the clock.
    after(0.2);
    expect(seesStranger(), {});
    after(1.9);
    expect(seesNobody(), {});  // So does an empty frame.
    after(0.2);
    expect(seesStranger(), {});

    machine = UnlockMachine({}, {});
    look();
    happens(seesStranger());
    after(2);
    expect(seesStranger(live), failedToRecognise);
    EXPECT_EQ(machine.nextDeadline(), world.now + TimeInterval(5));
}

TEST_F(UnlockMachineTest, onlyAMatchConfirmedInTheSameFrameConcludes) {
    look();
    expect(seesStranger(live), {});
    expect(sees(undecided), {});
    expect(seesStranger(live), {});
    expect(seesNobody(), {});
    expect(sees(wantsBoth), {});
    const Event stale =
        Event::Frame{LookID{99}, ScanObservation::Face{MatchedFace{UUID(), "Kim", 0.9F}, live}};
    expect(stale, {});
    expect(sees(live, ""), {"stopCamera", "overlay success", "typePassword", "log: Recognised "});
    expect(sees(live), {});
}

TEST_F(UnlockMachineTest, aMatchNeverConfirmedFailsLikeAStranger) {
    look();
    happens(sees(undecided));
    happens(seesStranger());
    after(5);
    expect(tick, {"stopCamera", "log: Stopped looking: the face matched but wasn’t confirmed real",
                  "overlay failure: Not recognised", "log: Not recognised"});
    EXPECT_EQ(machine.overlay(), OverlayPhase(OverlayPhase::Failure{UnlockFailure::NotLive{}}));
}

TEST_F(UnlockMachineTest, aDeniedFaceIsTurnedAwayWithItsLabel) {
    const std::pair<LivenessCue, const char*> rows[] = {
        {LivenessCue::realFace, "log: Turned away: Real-face model"},
        {LivenessCue::planar, "log: Turned away: Flat motion"},
        {LivenessCue::moire, "log: Turned away: Screen pattern"},
        {LivenessCue::glossGlare, "log: Turned away: Glare"},
        {LivenessCue::deviceDetected, "log: Turned away: Device frame"},
        {LivenessCue::headTurn, "log: Turned away: Head turn"},
    };
    for (const auto& [cue, label] : rows) {
        machine = UnlockMachine({}, {});
        look();
        expect(cue == LivenessCue::planar ? seesStranger(denied(cue)) : sees(denied(cue)),
               {"stopCamera", label, "overlay failure: Not recognised", "log: Not recognised"});
        EXPECT_EQ(machine.phase(), UnlockMachine::Phase(UnlockMachine::Phase::Failed{
                                       UnlockFailure::NotLive{}, world.now + TimeInterval(5)}));
    }
}

TEST_F(UnlockMachineTest, theHeadTurnIsAskedForOncePerLook) {
    look();
    expect(seesStranger(wantsTurn), {});
    expect(sees(wantsBoth), {});
    expect(sees(wantsTurn), {"overlay prompt", "log: Asked: Turn your head a little"});
    expect(sees(wantsTurn), {});
    expect(seesNobody(), {});
    expect(sees(wantsTurn), {});
    expect(sees(live), {"stopCamera", "overlay success", "typePassword", "log: Recognised Robin"});
    happens(Event::Typed{TypingOutcome::Stopped{}});
    happens(hover);
    expect(sees(wantsTurn), {"overlay prompt", "log: Asked: Turn your head a little"});
}

TEST_F(UnlockMachineTest, theGateHasTheLastWord) {
    // The camera is told to stop by the conclusion and again by the standing down.
    struct Row {
        bool UnlockSnapshot::* need;
        Effects effects;
    };
    const Row rows[] = {
        {&UnlockSnapshot::isEnabled,
         {"stopCamera", "stopCamera", "overlay hidden", "log: Stood down (refused: off)",
          "watchActivity off"}},
        {&UnlockSnapshot::vaultUnlocked,
         {"stopCamera", "stopCamera", "overlay hidden", "log: Stood down (refused: vaultLocked)",
          "watchActivity off"}},
        {&UnlockSnapshot::passwordSaved,
         {"stopCamera", "stopCamera", "overlay hidden", "log: Stood down (refused: noPassword)",
          "watchActivity off"}},
        {&UnlockSnapshot::accessibilityTrusted,
         {"stopCamera", "overlay failure: Needs permission", "log: Needs permission"}},
    };
    for (const Row& row : rows) {
        machine = UnlockMachine({}, {});
        look();
        world.*row.need = false;
        expect(sees(live), row.effects);
        world.*row.need = true;
    }
    machine = UnlockMachine({}, {});
    look();
    machine.replaceHealth({.failures = 2, .suspended = true});
    expect(sees(live), {"stopCamera", "stopCamera", "overlay hidden",
                        "log: Stood down (refused: passwordRejected)", "watchActivity off"});
}

TEST_F(UnlockMachineTest, anyEventFindsAnUnlockedScreen) {
    const Event events[] = {tick,
                            settings,
                            space,
                            hover,
                            typed,
                            activity(),
                            Event::CameraFailed{"Gone."},
                            Event::Frame{LookID{1}, {}}};
    for (const Event& event : events) {
        SCOPED_TRACE(event.index());
        machine = UnlockMachine({}, {});
        world.isLocked = true;
        look();
        world.isLocked = false;
        expect(event, {"stopCamera", "overlay leaving", "watchActivity off"});
        expect(event, {});

        machine = UnlockMachine({}, {});
        world.isLocked = true;
        typePassword();
        world.isLocked = false;
        expect(event, {"health 0", "log: Unlocked", "overlay leaving", "watchActivity off"});
    }
    // Typing that has not been confirmed proves nothing about the password.
    world.isLocked = true;
    machine = UnlockMachine({.failures = 1}, {});
    look();
    happens(sees(live));
    world.isLocked = false;
    expect(typed, {"overlay leaving", "watchActivity off"});
    EXPECT_EQ(machine.health().failures, 1);
}

TEST_F(UnlockMachineTest, aScreenUnlockedEventWhileStillLockedIsIgnored) {
    look();
    expect(unlocked, {});
    expectPhase("scanning");
}

TEST_F(UnlockMachineTest, theFailureIsHeldAndBlocksNothing) {
    const auto fail = [&] {
        machine = UnlockMachine({}, {});
        look();
        happens(Event::CameraFailed{"In use."});
        expectPhase("failed");
        after(4.9);
        expect(tick, {});
    };
    world.triggers = {UnlockTrigger::onReturn, UnlockTrigger::onSpace};
    const Event later = Event::Activity{{world.now + TimeInterval(1000), TimeInterval(9)}};
    for (const Event& event : {wakes, space, hover, later}) {
        fail();
        EXPECT_THAT(texts(machine.handle(event, world)), testing::Contains("startCamera 2"));
    }
    fail();
    after(-3);
    expect(activity(), {"log: Activity ignored: too soon after the lock or the last look"});
    after(3);
    expect(settings, {});
    world.vaultUnlocked = false;
    expect(settings, {"listenForSpace off", "watchActivity off"});  // Still held.
    world.vaultUnlocked = true;
    after(0.1);
    expect(tick, {"overlay closed", "listenForSpace on", "watchActivity on"});
    expectPhase("armed");

    fail();
    world.hasFace = false;
    after(0.1);
    expect(tick, {"overlay hidden", "log: Stood down (can’t unlock now)", "listenForSpace off",
                  "watchActivity off"});
    expectPhase("idle");
}

TEST_F(UnlockMachineTest, typingOutcomesBelongToTyping) {
    const Event stopped = Event::Typed{TypingOutcome::Stopped{}};
    const Event failed = Event::Typed{TypingOutcome::Failed{"Couldn’t make a key press."}};
    look();
    for (const Event& event : {typed, stopped, failed})
        expect(event, {});
    happens(sees(live));
    after(0.2);
    expect(stopped, {"overlay closed"});
    expect(activity(), {"log: Activity ignored: too soon after the lock or the last look"});
    happens(hover);
    happens(sees(live));
    expect(failed, {"overlay failure: Couldn’t type", "log: Couldn’t type"});
    EXPECT_EQ(machine.overlay(), OverlayPhase(OverlayPhase::Failure{
                                     UnlockFailure::TypingFailed{"Couldn’t make a key press."}}));
    EXPECT_EQ(machine.health(), PasswordHealth());
}

TEST_F(UnlockMachineTest, aPasswordTurnedDownTwiceIsNotTypedAgain) {
    typePassword();
    after(3.9);
    expect(tick, {});
    after(0.1);
    expect(tick, {"health 1", "log: Password turned down", "overlay failure: Password not accepted",
                  "log: Password not accepted"});
    happens(hover);
    happens(sees(live));
    happens(typed);
    after(4);
    expect(tick, {"health 2 suspended notice",
                  "log: Password turned down twice: typing stops until it’s updated",
                  "overlay failure: Password not accepted", "log: Password not accepted",
                  "watchActivity off"});
    for (const Event& event : {wakes, hover, activity()})
        expect(event, {});
    after(5);
    expect(tick, {"overlay hidden", "log: Stood down (can’t unlock now)"});

    // However the screen is unlocked, the user is asked, once.
    after(60);
    world.isLocked = false;
    expect(tick, {});
    expect(wakes, {"health 2 suspended", "askToUpdatePassword"});
    expect(unlocked, {});
    world.isLocked = true;
    expect(locked, {"log: Locked: waiting for you to come back"});
    machine.replaceHealth({});
    expect(settings, {"watchActivity on"});
}

TEST_F(UnlockMachineTest, aSuccessBetweenTwoFailuresForgivesTheFirst) {
    machine = UnlockMachine({.failures = 1, .needsNotice = true}, {});
    typePassword();
    world.isLocked = false;
    expect(unlocked, {"health 0 notice", "log: Unlocked", "overlay leaving", "health 0",
                      "askToUpdatePassword", "watchActivity off"});
    world.isLocked = true;
    typePassword();
    after(4);
    happens(tick);
    EXPECT_EQ(machine.health(), PasswordHealth{.failures = 1});
}

TEST_F(UnlockMachineTest, withoutTheIslandOnlyItsGoingIsShown) {
    look();
    world.showsUI = false;
    expect(settings, {"overlay hidden"});
    expect(settings, {});
    expect(sees(wantsTurn), {"log: Asked: Turn your head a little"});
    expect(sees(live), {"stopCamera", "typePassword", "log: Recognised Robin"});
    expect(typed, {"log: Typed the password and Return"});
    after(4);
    expect(tick, {"health 1", "log: Password turned down", "log: Password not accepted"});
    after(5);
    expect(tick, {});
    expectPhase("armed");
    world.isLocked = false;
    expect(unlocked, {"watchActivity off"});

    // Switched off unheard while something shows: it still leaves.
    world.isLocked = true;
    world.showsUI = true;
    arm();
    world.showsUI = false;
    expect(hover, {"startCamera 2", "log: Looking (hover)"});
    world.isLocked = false;
    expect(unlocked, {"stopCamera", "overlay leaving", "watchActivity off"});
}

TEST_F(UnlockMachineTest, settingsThatMakeUnlockingImpossibleStandDown) {
    const Effects stoodDown{"overlay hidden", "log: Stood down (can’t unlock now)",
                            "watchActivity off"};
    arm();
    world.isEnabled = false;
    expect(settings, stoodDown);
    expect(settings, {});
    world.isEnabled = true;
    expect(settings,
           {"watchActivity on"});  // Listens again, but stays idle until something happens.
    expectPhase("idle");

    machine = UnlockMachine({}, {});
    typePassword();
    world.passwordSaved = false;
    expect(settings, stoodDown);
    world.passwordSaved = true;
    expect(typed, {"watchActivity on"});

    machine = UnlockMachine({}, {});
    look();
    world.isEnabled = false;
    expect(settings, {"stopCamera", "overlay hidden", "log: Stood down (can’t unlock now)",
                      "watchActivity off"});
}

TEST_F(UnlockMachineTest, sleepEndsALookAndNothingElse) {
    typePassword();
    expect(sleeps, {});
    expectPhase("verifying");
    machine = UnlockMachine({}, {});
    expect(sleeps, {"watchActivity on"});
    expectPhase("idle");
}

}  // namespace
}  // namespace marrowby
