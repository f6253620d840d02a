// SPDX-License-Identifier: Apache-2.0
#include "Tests/Fakes/EffectText.h"
#include "UnlockCore/Engine/UnlockMachine.h"

#include <algorithm>
#include <map>
#include <random>

#include <gtest/gtest.h>

namespace marrowby {
namespace {

using Effect = UnlockMachine::Effect;
using Event = UnlockMachine::Event;
using Phase = UnlockMachine::Phase;

/// In every fourth the desktop is asked.
constexpr int stories = 80;
constexpr int eventsPerStory = 5000;

/// Makes up events, worlds and jumps of time; more likely than not such that the story goes on.
class Fate {
  public:
    explicit Fate(std::uint64_t seed) : random_(seed) {
        world.now = Date(TimeInterval(700'000'000));
        world.isLocked = true;
        if (seed % 4 == 3) world.opening = LockOpening::asking;
        for (bool UnlockSnapshot::* const flag : flags)
            world.*flag = true;
        world.scanDuration = TimeInterval(5);
        world.triggers = {UnlockTrigger::onReturn, UnlockTrigger::onSpace};
    }

    UnlockSnapshot world;

    /// Once in `n`.
    bool happens(unsigned n) { return below(n) == 0; }

    Event next(const UnlockMachine& machine) {
        if (happens(lonely_ ? 40 : 400)) lonely_ = !lonely_;
        if (lonely_) return nobodyComes(machine);
        passTime(machine);
        changeWorld(machine);
        return event(machine);
    }

  private:
    static constexpr bool UnlockSnapshot::* flags[] = {
        &UnlockSnapshot::isEnabled,     &UnlockSnapshot::showsUI,
        &UnlockSnapshot::vaultUnlocked, &UnlockSnapshot::passwordSaved,
        &UnlockSnapshot::hasFace,       &UnlockSnapshot::accessibilityTrusted,
        &UnlockSnapshot::spaceKeyAccess};

    unsigned below(unsigned n) { return static_cast<unsigned>(random_() % n); }
    double fraction() { return below(1000) / 1000.0; }

    /// Something jogs the desk, and the camera sees an empty chair.
    Event nobodyComes(const UnlockMachine& machine) {
        if (const auto deadline = machine.nextDeadline()) {
            world.now = *deadline;
            return Event::Tick{};
        }
        world.now += TimeInterval(3);
        return Event::Activity{{world.now, TimeInterval(3)}};
    }

    void passTime(const UnlockMachine& machine) {
        const auto deadline = machine.nextDeadline();
        switch (below(40)) {
            case 0:
                world.now += TimeInterval(7200 * (fraction() - 0.5));
                return;
            case 1:
            case 2:
                if (deadline) world.now = *deadline;
                return;
            case 3:
            case 4:
                world.now += TimeInterval(10 * fraction());
                return;
            default:
                world.now += TimeInterval(0.7 * fraction());
        }
    }

    void changeWorld(const UnlockMachine& machine) {
        if (happens(30)) world.*flags[below(std::size(flags))] = false;
        if (happens(5)) world.*flags[below(std::size(flags))] = true;
        if (happens(world.isLocked ? 40 : 4)) world.isLocked = !world.isLocked;
        if (happens(world.isSleeping ? 4 : 60)) world.isSleeping = !world.isSleeping;
        if (std::holds_alternative<Phase::Verifying>(machine.phase()) && happens(6)) {
            world.isLocked = false;
        }
        if (happens(50)) {
            const UnlockTriggers choices[] = {{},
                                              {UnlockTrigger::onReturn},
                                              {UnlockTrigger::onSpace},
                                              {UnlockTrigger::onReturn, UnlockTrigger::onSpace}};
            world.triggers = choices[below(4)];
        }
        if (happens(50)) world.scanDuration = TimeInterval(12 * fraction() - 1);
    }

    Event event(const UnlockMachine& machine) {
        const auto* scanning = std::get_if<Phase::Scanning>(&machine.phase());
        if (scanning != nullptr && !happens(4)) return frame(scanning->scan.id);
        if (std::holds_alternative<Phase::Typing>(machine.phase()) && !happens(3)) {
            return outcome(below(6));
        }
        switch (below(10)) {
            case 0:
                return Event::Lock{std::array{LockEvent::screenLocked, LockEvent::screenUnlocked,
                                              LockEvent::willSleep, LockEvent::wake}[below(4)]};
            case 1:
                return Event::Activity{
                    {world.now - TimeInterval(fraction()), TimeInterval(5 * fraction())}};
            case 2:
                return Event::CameraFailed{"The camera went away."};
            case 3:
                return frame(ScanID{below(9)});
            case 4:
                return outcome(below(3));
            case 5:
                return Event::SpaceKey{};
            case 6:
                return Event::Activate{};
            case 7:
                return Event::SettingsChanged{};
            default:
                return Event::Tick{};
        }
    }

    [[nodiscard]] Event outcome(unsigned choice) const {
        if (world.opening == LockOpening::asking) {
            if (choice == 0)
                return Event::Typed{TypingOutcome::NotAsked{Phrase("Nobody answers.")}};
            if (choice > 1) return Event::Typed{TypingOutcome::Asked{}};
        }
        if (choice == 0) return Event::Typed{TypingOutcome::Failed{"Couldn’t make a key press."}};
        if (choice == 1) return Event::Typed{TypingOutcome::Stopped{}};
        return Event::Typed{TypingOutcome::Typed{}};
    }

    Event frame(ScanID id) {
        if (happens(5)) return Event::Frame{id, ScanObservation::NoFace{}};
        if (happens(9)) return Event::Frame{id, ScanObservation::CutOff{}};
        ScanObservation::Face face;
        if (!happens(4)) face.match = MatchedFace{UUID(), "Robin of the Long Name", 0.7F};
        switch (below(12)) {
            case 0:
                face.decision = LivenessDecision::Denied{allLivenessCues[below(6)]};
                break;
            case 1:
            case 2:
            case 3:
                face.decision = LivenessDecision::Confirmed{};
                break;
            default:
                face.decision = LivenessDecision::Waiting{{static_cast<int>(below(4))}};
        }
        return Event::Frame{id, face};
    }

    std::mt19937_64 random_;
    bool lonely_ = false;
};

/// What the outside world knows from the effects alone, checked against the rules after every
/// event.
class Witness {
  public:
    Witness(const UnlockMachine& machine) : machine_(machine), health_(machine.health()) {}

    std::map<std::string, int> seen;

    void healthWasReplaced() { health_ = machine_.health(); }

    void watch(const Event& event, const UnlockSnapshot& world, const Phase& before,
               const std::vector<Effect>& effects) {
        event_ = &event;
        world_ = &world;
        before_ = &before;
        const bool wasSuspended = health_.suspended;
        const bool wasInVain = askedInVain_;
        const bool refused = std::ranges::any_of(effects, [](const Effect& effect) {
            return text(effect).starts_with("log: Stood down (refused");
        });
        looksStarted_ = typings_ = stops_ = 0;
        const auto* lock = std::get_if<Event::Lock>(&event);
        if (lock != nullptr && (!world.isLocked || lock->event == LockEvent::screenLocked))
            askedInVain_ = false;
        for (const Effect& effect : effects) {
            ++seen[text(effect).substr(0, text(effect).find_first_of("0123456789"))];
            std::visit([this](const auto& done) { take(done); }, effect);
        }
        EXPECT_LE(effects.size(), 8U);
        EXPECT_LE(looksStarted_, 1);
        EXPECT_LE(typings_, 1);
        EXPECT_LE(stops_, refused ? 2 : 1);
        EXPECT_FALSE(typings_ > 0 && (wasInVain || (types() && wasSuspended)));
        checkState();
    }

  private:
    [[nodiscard]] bool isAble() const {
        return world_->isLocked && world_->isEnabled && world_->vaultUnlocked &&
               world_->passwordSaved && world_->hasFace && !askedInVain_ &&
               !(types() && machine_.health().suspended);
    }
    [[nodiscard]] bool types() const { return world_->opening == LockOpening::typing; }

    void checkState() {
        const auto* scanning = std::get_if<Phase::Scanning>(&machine_.phase());
        EXPECT_EQ(cameraOn_, scanning != nullptr);
        EXPECT_EQ(machine_.health(), health_) << "every change is stored";
        EXPECT_GE(health_.failures, 0);
        EXPECT_EQ(machine_.overlay(), overlay_);
        EXPECT_FALSE(std::holds_alternative<OverlayPhase::Leaving>(machine_.overlay()));
        EXPECT_EQ(listening_, isAble() && world_->spaceKeyAccess &&
                                  world_->triggers.contains(UnlockTrigger::onSpace));
        EXPECT_EQ(watching_, isAble() && !world_->isSleeping &&
                                 world_->triggers.contains(UnlockTrigger::onReturn));
        if (!world_->isLocked) {
            EXPECT_TRUE(std::holds_alternative<Phase::Idle>(machine_.phase()));
            EXPECT_EQ(text(machine_.overlay()), "hidden");
        }
        if (scanning != nullptr) {
            EXPECT_EQ(scanning->scan.id, lastLook_);
            EXPECT_GE(scanning->scan.deadline - scanning->scan.startedAt, TimeInterval(1));
        }
        const auto deadline = machine_.nextDeadline();
        if (std::holds_alternative<Event::Tick>(*event_) && deadline) {
            // An overdue tick moves on, so the timer cannot spin.
            EXPECT_GT(*deadline, world_->now);
        }
        ++seen[text(machine_.phase())];
    }

    void take(const Effect::Overlay& shown) {
        const bool leaves = std::holds_alternative<OverlayPhase::Leaving>(shown.phase);
        EXPECT_NE(shown.phase, overlay_);
        overlay_ = leaves ? OverlayPhase(OverlayPhase::Hidden{}) : shown.phase;
        EXPECT_TRUE(world_->showsUI || text(overlay_) == "hidden");
    }
    void take(const Effect::StartCamera& start) {
        EXPECT_FALSE(cameraOn_);
        EXPECT_EQ(static_cast<std::int64_t>(start.id), static_cast<std::int64_t>(lastLook_) + 1);
        EXPECT_TRUE(isAble());
        cameraOn_ = true;
        lastLook_ = start.id;
        ++looksStarted_;
    }
    void take(const Effect::StopCamera&) {
        EXPECT_TRUE(cameraOn_ || stops_ > 0);
        cameraOn_ = false;
        ++stops_;
    }
    void take(const Effect::ListenForSpace& listen) {
        EXPECT_NE(listen.on, listening_);
        listening_ = listen.on;
    }
    void take(const Effect::WatchActivity& watch) {
        EXPECT_NE(watch.on, watching_);
        watching_ = watch.on;
    }
    void take(const Effect::PasswordHealth& changed) {
        if (changed.health.failures == 0 && health_.failures != 0) {
            EXPECT_TRUE(std::holds_alternative<Phase::Verifying>(*before_) && !world_->isLocked);
        }
        EXPECT_TRUE(changed.health.suspended || !health_.suspended);
        noticeGoes_ = health_.needsNotice && !changed.health.needsNotice;
        health_ = changed.health;
    }
    void take(const Effect::AskToUpdatePassword&) {
        EXPECT_TRUE(noticeGoes_);
        EXPECT_FALSE(world_->isLocked);
        noticeGoes_ = false;
    }
    void take(const Effect::Log& log) {
        EXPECT_FALSE(log.line.text().empty());
        askedInVain_ |= log.line.event == logevent::notUnlocked;
    }
    void take(const Effect::TypePassword&) {
        ++typings_;
        EXPECT_TRUE(world_->isLocked && world_->isEnabled && world_->vaultUnlocked &&
                    world_->passwordSaved && world_->accessibilityTrusted);
        EXPECT_FALSE(cameraOn_) << "nothing is filmed while typing";
        EXPECT_TRUE(std::holds_alternative<Phase::Typing>(machine_.phase()));
        const auto* scanning = std::get_if<Phase::Scanning>(before_);
        const auto* frame = std::get_if<Event::Frame>(event_);
        ASSERT_TRUE(scanning != nullptr && frame != nullptr);
        EXPECT_EQ(frame->id, lastLook_);
        EXPECT_LT(world_->now, scanning->scan.deadline);
        const auto* face = std::get_if<ScanObservation::Face>(&frame->observation);
        ASSERT_TRUE(face != nullptr);
        EXPECT_TRUE(face->match);
        EXPECT_TRUE(std::holds_alternative<LivenessDecision::Confirmed>(face->decision));
    }

    const UnlockMachine& machine_;
    const Event* event_ = nullptr;
    const UnlockSnapshot* world_ = nullptr;
    const Phase* before_ = nullptr;
    PasswordHealth health_;
    OverlayPhase overlay_ = OverlayPhase::Hidden{};
    bool cameraOn_ = false;
    bool listening_ = false;
    bool watching_ = false;
    bool noticeGoes_ = false;
    bool askedInVain_ = false;
    ScanID lastLook_{};
    int looksStarted_ = 0;
    int typings_ = 0;
    int stops_ = 0;
};

TEST(UnlockMachineModel, keepsItsPromisesInEveryStory) {
    std::map<std::string, int> seen;
    for (int story = 0; story < stories; ++story) {
        Fate fate(static_cast<std::uint64_t>(story));
        UnlockMachine machine({}, fate.world.triggers);
        Witness witness(machine);
        for (int done = 0; done < eventsPerStory; ++done) {
            if (fate.happens(300)) {
                // The password is saved anew or, for once, has gone bad in the middle of something.
                const bool bad = fate.happens(3);
                machine.replaceHealth({.failures = bad ? 2 : 0, .suspended = bad});
                witness.healthWasReplaced();
            }
            const Event event = fate.next(machine);
            const Phase before = machine.phase();
            const auto effects = machine.handle(event, fate.world);
            witness.watch(event, fate.world, before, effects);
            if (testing::Test::HasFailure()) {
                FAIL() << "story " << story << ", event " << done << ": from " << text(before)
                       << " by event " << event.index() << " came "
                       << testing::PrintToString(texts(effects));
            }
        }
        for (const auto& [what, times] : witness.seen)
            seen[what] += times;
    }
    // The stories went everywhere.
    for (const char* what : {"idle",
                             "armed",
                             "scanning",
                             "typing",
                             "verifying",
                             "failed",
                             "typePassword",
                             "askToUpdatePassword",
                             "overlay prompt",
                             "overlay leaving",
                             "log: Unlocked",
                             "log: Activity ignored: ",
                             "log: Password turned down twice: typing stops until it’s updated",
                             "log: Stopped looking: the face matched but wasn’t confirmed real",
                             "log: Stood down (refused: vaultLocked)",
                             "log: Needs permission",
                             "log: Looking (wake)",
                             "log: Looking (activity)",
                             "log: Looking (space)",
                             "log: Looking (hover)",
                             "log: Asked the desktop to unlock",
                             "log: Not unlocked: Nobody answers."}) {
        EXPECT_GT(seen[what], 10) << what;
    }
}

}  // namespace
}  // namespace marrowby
