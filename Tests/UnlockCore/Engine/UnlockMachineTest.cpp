// SPDX-License-Identifier: Apache-2.0
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
const Event asked = Event::Typed{TypingOutcome::Asked{}};

const LivenessDecision live = LivenessDecision::Confirmed{};
const LivenessDecision undecided = LivenessDecision::Waiting{LivenessNeeds::realFace};
const LivenessDecision wantsTurn = LivenessDecision::Waiting{LivenessNeeds::headTurn};
const LivenessDecision wantsBoth = LivenessDecision::Waiting{{3}};

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
    [[nodiscard]] ScanID currentScan() const {
        const auto* scanning = std::get_if<UnlockMachine::Phase::Scanning>(&machine.phase());
        return scanning != nullptr ? scanning->scan.id : ScanID{};
    }
    [[nodiscard]] Event sees(LivenessDecision decision, const char* name = "Robin") const {
        return Event::Frame{currentScan(),
                            ScanObservation::Face{MatchedFace{UUID(), name, 0.7F}, decision}};
    }
    [[nodiscard]] Event seesStranger(LivenessDecision decision = undecided) const {
        return Event::Frame{currentScan(), ScanObservation::Face{std::nullopt, decision}};
    }
    [[nodiscard]] Event seesNobody() const {
        return Event::Frame{currentScan(), ScanObservation::NoFace{}};
    }

    [[nodiscard]] Event seesCutOff() const {
        return Event::Frame{currentScan(), ScanObservation::CutOff{}};
    }

    UnlockSnapshot world;
    UnlockMachine machine{{}, {UnlockTrigger::onReturn}};
};

const Effects nobodyInTime{"stopCamera", "log: Stopped looking: no answer in time",
                           "overlay closed"};

TEST_F(UnlockMachineTest, fromLockToUnlockByAWake) {
    machine = UnlockMachine({.failures = 1}, {});
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
        expect(locked, onlyLogged);
        expectPhase("idle");
        world.*need = true;
    }
    world.isSleeping = true;
    expect(locked, onlyLogged);
    expect(wakes, {});
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

    // A new lock, and sleep at once or before: the wake counts however soon it comes.
    world.triggers = {UnlockTrigger::onReturn};
    for (const bool sleptBefore : {false, true}) {
        world.isLocked = false;
        happens(unlocked);
        world.isLocked = true;
        world.isSleeping = sleptBefore;
        happens(locked);
        if (!sleptBefore) happens(sleeps);
        after(0.5);
        world.isSleeping = false;
        happens(wakes);
        expectPhase("scanning");
    }
}

TEST_F(UnlockMachineTest, aMissedLockIsMadeUpForByTheWake) {
    expect(wakes, {"overlay closed", "overlay scanning", "startCamera 1", "log: Looking (wake)",
                   "watchActivity on"});
    after(5);
    expect(tick, nobodyInTime);
    after(1.9);
    expect(activity(), {"log: Activity ignored: too soon after the lock or the last look"});
    after(0.1);
    expect(activity(), {"overlay scanning", "startCamera 2", "log: Looking (activity)"});
}

TEST_F(UnlockMachineTest, activityMustBeAReturn) {
    happens(locked);
    after(1.9);
    expect(activity(), {"log: Activity ignored: too soon after the lock or the last look"});
    after(0.1);
    expect(activity(0.9), {});  // Logged once for one lock.
    expect(activity(1.0), {"overlay scanning", "startCamera 1", "log: Looking (activity)"});
    expect(activity(), {});
    after(5);
    expect(tick, nobodyInTime);
    after(2);
    expect(activity(0.2), {"log: Activity ignored: no quiet moment before it"});
    after(-3);
    expect(activity(), {});  // The clock was set back.
    after(3);
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
    const auto activityLooks = [&] {
        after(3);
        happens(activity());
        return text(machine.phase()) == "scanning";
    };
    const auto lookAtNobody = [&](int times) {
        for (int i = 0; i < times; ++i) {
            EXPECT_TRUE(activityLooks());
            happens(seesNobody());
            after(5);
            expect(tick, nobodyInTime);
        }
    };
    lookAtNobody(3);
    after(3);
    expect(activity(), {"log: Activity ignored: 3 looks in a row saw nobody"});
    expect(activity(), {});

    // Any other look counts anew, even one that sees nobody either.
    happens(hover);
    after(5);
    happens(tick);
    lookAtNobody(2);
    // So does a look that saw a face, whatever became of it.
    EXPECT_TRUE(activityLooks());
    happens(seesStranger());
    after(5);
    expect(tick, nobodyInTime);
    lookAtNobody(2);
    EXPECT_TRUE(activityLooks());
    happens(sees(LivenessDecision::Denied{LivenessCue::moire}));
    after(5);
    // A camera that fails without having seen anything is no such look.
    lookAtNobody(2);
    EXPECT_TRUE(activityLooks());
    happens(Event::CameraFailed{"Unplugged."});
    lookAtNobody(1);
    EXPECT_FALSE(activityLooks());
    happens(locked);
    lookAtNobody(1);
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
    machine = UnlockMachine({}, {});
    world.isSleeping = true;
    expect(space, {"overlay scanning", "startCamera 1", "log: Looking (space)",
                   "listenForSpace on"});  // From idle; asleep or not.
}

TEST_F(UnlockMachineTest, aStrangerMayStayTwoSeconds) {
    world.scanDuration = TimeInterval(10);
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
    after(2);
    expect(seesStranger(live),
           {"stopCamera", "overlay failure: Not recognised", "log: Not recognised"});
}

TEST_F(UnlockMachineTest, onlyAMatchConfirmedInTheSameFrameConcludes) {
    look();
    expect(seesStranger(live), {});
    expect(sees(undecided), {});
    expect(seesStranger(live), {});
    expect(seesNobody(), {});
    expect(sees(wantsBoth), {});
    const Event stale =
        Event::Frame{ScanID{99}, ScanObservation::Face{MatchedFace{UUID(), "Kim", 0.9F}, live}};
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

TEST_F(UnlockMachineTest, aFaceCutOffIsToldToMoveBackIfNothingElseCameOfIt) {
    look();
    expect(seesCutOff(), {"log: The face reaches over the picture’s edge"});
    expect(seesCutOff(), {});
    after(6);
    expect(tick, {"stopCamera", "log: Stopped looking: the face reached over the picture’s edge",
                  "overlay failure: Move back a little", "log: Move back a little"});
    // It was no empty chair, but a camera that fails is not one either.
    for (const Event& end : {seesCutOff(), Event(Event::CameraFailed{"The model failed."})}) {
        for (int i = 0; i < 5; ++i) {
            after(10);
            happens(tick);
            happens(activity());
            expectPhase("scanning");
            happens(std::holds_alternative<Event::Frame>(end) ? seesCutOff() : end);
            after(6);
            happens(tick);
        }
    }
    after(10);
    happens(tick);
    happens(hover);
    happens(seesCutOff());
    expect(sees(live), {"stopCamera", "overlay success", "typePassword", "log: Recognised Robin"});
}

TEST_F(UnlockMachineTest, aDeniedFaceIsTurnedAwayWhoeverItIs) {
    look();
    expect(seesStranger(LivenessDecision::Denied{LivenessCue::planar}),
           {"stopCamera", "log: Turned away: Flat motion", "overlay failure: Not recognised",
            "log: Not recognised"});
    EXPECT_EQ(machine.phase(), UnlockMachine::Phase(UnlockMachine::Phase::Failed{
                                   UnlockFailure::NotLive{}, world.now + TimeInterval(5)}));
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
    look();
    world.accessibilityTrusted = false;
    expect(sees(live),
           {"stopCamera", "overlay failure: Needs permission", "log: Needs permission"});
    machine = UnlockMachine({}, {});
    look();
    machine.replaceHealth({.failures = 2, .suspended = true});
    // The camera is told to stop by the conclusion and again by the standing down.
    expect(sees(live), {"stopCamera", "stopCamera", "overlay hidden",
                        "log: Stood down (refused: passwordRejected)", "watchActivity off"});
}

TEST_F(UnlockMachineTest, anyEventFindsAnUnlockedScreenButNoneIsBelieved) {
    look();
    expect(unlocked, {});
    expectPhase("scanning");
    world.isLocked = false;
    expect(hover, {"stopCamera", "overlay leaving", "watchActivity off"});
    world.isLocked = true;
    typePassword();
    world.isLocked = false;
    expect(tick, {"health 0", "log: Unlocked", "overlay leaving", "watchActivity off"});

    // Typing that has not been confirmed proves nothing about the password.
    world.isLocked = true;
    machine = UnlockMachine({.failures = 1}, {});
    look();
    happens(sees(live));
    world.isLocked = false;
    expect(typed, {"overlay leaving", "watchActivity off"});
    EXPECT_EQ(machine.health().failures, 1);
}

TEST_F(UnlockMachineTest, theFailureIsHeldAndBlocksNothing) {
    world.triggers = {UnlockTrigger::onReturn, UnlockTrigger::onSpace};
    const Event later = Event::Activity{{world.now + TimeInterval(1000), TimeInterval(9)}};
    const auto fail = [&] {
        machine = UnlockMachine({}, {});
        look();
        happens(Event::CameraFailed{"In use."});
        after(4.9);
        expect(tick, {});
        expectPhase("failed");
    };
    for (const Event& event : {wakes, space, hover, later}) {
        fail();
        EXPECT_THAT(texts(machine.handle(event, world)), testing::Contains("startCamera 2"));
    }
    fail();
    world.vaultUnlocked = false;
    expect(settings, {"listenForSpace off", "watchActivity off"});  // Still held.
    after(0.1);
    expect(tick, {"overlay hidden", "log: Stood down (can’t unlock now)"});
    world.vaultUnlocked = true;
    fail();
    after(0.1);
    expect(tick, {"overlay closed"});
}

TEST_F(UnlockMachineTest, typingOutcomesBelongToTyping) {
    const Event stopped = Event::Typed{TypingOutcome::Stopped{}};
    const Event failed = Event::Typed{TypingOutcome::Failed{"Couldn’t make a key press."}};
    const Effects tooSoon{"log: Activity ignored: too soon after the lock or the last look"};
    look();
    for (const Event& event : {typed, stopped, failed})
        expect(event, {});
    happens(sees(live));
    expect(stopped, {"overlay closed"});
    expect(activity(), tooSoon);
    happens(hover);
    after(1);
    happens(sees(live));
    expect(failed, {"overlay failure: Couldn’t type", "log: Couldn’t type"});
    expect(activity(), tooSoon);
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

    // However the screen is unlocked, the user is asked, once.
    world.isLocked = false;
    expect(tick, {"overlay leaving"});
    expect(wakes, {"health 2 suspended", "askToUpdatePassword"});
    expect(unlocked, {});
    world.isLocked = true;
    expect(locked, {"log: Locked: waiting for you to come back"});
    machine.replaceHealth({});
    expect(settings, {"watchActivity on"});
}

TEST_F(UnlockMachineTest, withoutTheIslandOnlyItsGoingIsShown) {
    look();
    world.showsUI = false;
    expect(settings, {"overlay hidden"});
    expect(settings, {});
    expect(sees(live), {"stopCamera", "typePassword", "log: Recognised Robin"});
}

TEST_F(UnlockMachineTest, settingsThatMakeUnlockingImpossibleStandDown) {
    look();
    world.isEnabled = false;
    expect(settings, {"stopCamera", "overlay hidden", "log: Stood down (can’t unlock now)",
                      "watchActivity off"});
    expect(settings, {});
    world.isEnabled = true;
    // Listens again, but stays idle until something happens.
    expect(settings, {"watchActivity on"});
    expectPhase("idle");

    typePassword();
    world.passwordSaved = false;
    expect(settings, {"overlay hidden", "log: Stood down (can’t unlock now)", "watchActivity off"});
    world.passwordSaved = true;
    expect(typed, {"watchActivity on"});
}

/// The desktop is asked: what may be wrong with a password does not matter.
struct AskingMachineTest : UnlockMachineTest {
    AskingMachineTest() {
        world.opening = LockOpening::asking;
        machine = UnlockMachine({.failures = 2, .suspended = true, .needsNotice = true},
                                {UnlockTrigger::onReturn});
    }
    void recognise() {
        look();
        happens(sees(live));
        expectPhase("typing");
        after(0.1);
    }
};

TEST_F(AskingMachineTest, opensTheLockAndLeavesThePasswordsHealth) {
    recognise();
    expect(asked, {"log: Asked the desktop to unlock"});
    expectPhase("verifying");
    EXPECT_EQ(machine.nextDeadline(), world.now + TimeInterval(3));
    after(2.9);
    expect(tick, {});
    world.isLocked = false;
    expect(unlocked, {"log: Unlocked", "overlay leaving", "watchActivity off"});
    EXPECT_EQ(machine.health().failures, 2);
    EXPECT_TRUE(machine.health().needsNotice);
}

TEST_F(AskingMachineTest, noticesADesktopThatUnlocksBeforeItAnswers) {
    recognise();
    world.isLocked = false;
    expect(unlocked, {"log: Unlocked", "overlay leaving", "watchActivity off"});
    expect(asked, {});
}

TEST_F(AskingMachineTest, asksOncePerLock) {
    const struct {
        Event outcome;
        double seconds;
        const char* line;
    } cases[] = {
        {asked, 3.0, "log: Not unlocked: The screen stayed locked."},
        {Event::Typed{TypingOutcome::NotAsked{Phrase("The system refused: {detail}"), "No."}}, 0,
         "log: Not unlocked: The system refused: No."},
    };
    for (const auto& [outcome, seconds, line] : cases) {
        recognise();
        if (seconds > 0) {
            happens(outcome);
            after(seconds);
        }
        expect(seconds > 0 ? tick : outcome, {line, "overlay failure: Couldn’t unlock",
                                              "log: Couldn’t unlock", "watchActivity off"});
        after(1);
        for (const Event& reason : {wakes, hover, space, activity()})
            expect(reason, {});
        after(5);
        expect(tick, {"overlay hidden", "log: Stood down (can’t unlock now)"});
        after(60);
        expect(wakes, {});
        // The next lock is a new one.
        world.isLocked = false;
        happens(unlocked);
        world.isLocked = true;
    }
    recognise();
}

}  // namespace
}  // namespace marrowby
