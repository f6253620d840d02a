// SPDX-License-Identifier: Apache-2.0
#include "UnlockCore/Engine/UnlockMachine.h"

#include "UnlockCore/Foundation/Fatal.h"
#include "UnlockCore/LockWatching/UnlockGate.h"

#include <algorithm>
#include <utility>

namespace marrowby {

using unlockmachine::LookReason;

Phrase unlockmachine::name(LookReason reason) {
    switch (reason) {
        case LookReason::wake:
            return Phrase("wake");
        case LookReason::activity:
            return Phrase("activity");
        case LookReason::space:
            return Phrase("space");
        case LookReason::hover:
            return Phrase("hover");
    }
    return {};
}

/// One call of handle(): the snapshot, and the effects so far.
struct UnlockMachine::Turn {
    // No event has more: one allocation, and none for most frames.
    static constexpr std::size_t maxEffects = 8;

    const UnlockSnapshot& world;
    std::vector<Effect> effects;

    void add(Effect effect) {
        if (effects.empty()) effects.reserve(maxEffects);
        effects.push_back(std::move(effect));
    }
    void log(LogLine line) { add(Effect::Log{std::move(line)}); }
    void log(std::string_view event, Phrase sentence) {
        log(LogLine{.event = event, .sentence = sentence});
    }
};

UnlockMachine::UnlockMachine(PasswordHealth health, UnlockTriggers triggers)
    : policy_{.triggers = triggers}, health_(health) {}

std::vector<UnlockMachine::Effect> UnlockMachine::handle(Event event,
                                                         const UnlockSnapshot& snapshot) {
    Turn turn{snapshot, {}};
    policy_.triggers = snapshot.triggers;
    // Below this every handler but Lock sees a locked screen, or a machine at rest.
    if (!snapshot.isLocked && !isAtRest() && !std::holds_alternative<Event::Lock>(event)) {
        returnToIdle(turn);
    } else {
        std::visit([&](auto& happened) { on(happened, turn); }, event);
    }
    syncListeners(turn);
    return std::move(turn.effects);
}

bool UnlockMachine::hasEffects(const Event& event, const UnlockSnapshot& snapshot) const {
    UnlockMachine copy = *this;
    return !copy.handle(event, snapshot).empty();
}

std::optional<Date> UnlockMachine::nextDeadline() const {
    struct Deadline {
        using Result = std::optional<Date>;
        Result operator()(const Phase::Scanning& scanning) { return scanning.scan.deadline; }
        Result operator()(const Phase::Verifying& verifying) {
            return verifying.since + (verifying.isAsked ? askedCheckDelay : passwordCheckDelay);
        }
        Result operator()(const Phase::Failed& failed) { return failed.until; }
        Result operator()(const Phase::Idle&) { return std::nullopt; }
        Result operator()(const Phase::Armed&) { return std::nullopt; }
        Result operator()(const Phase::Typing&) { return std::nullopt; }
    };
    return std::visit(Deadline(), phase_);
}

// MARK: Events

void UnlockMachine::on(const Event::Lock& event, Turn& turn) {
    const UnlockSnapshot& world = turn.world;
    if (!world.isLocked) return onFoundUnlocked(turn);
    switch (event.event) {
        case LockEvent::screenLocked:
            policy_.screenLocked(world.now, world.isSleeping);
            emptyActivityLooks_ = 0;
            hasAskedInVain_ = false;
            turn.log(logevent::locked, Phrase("Locked: waiting for you to come back"));
            if (!world.isSleeping && isAble(world) && std::holds_alternative<Phase::Idle>(phase_)) {
                rearm(turn);
            }
            return;
        case LockEvent::screenUnlocked:
            return;
        case LockEvent::willSleep:
            policy_.willSleep();
            if (currentScan() != nullptr) {
                turn.add(Effect::StopCamera{});
                rearm(turn);
            }
            return;
        case LockEvent::wake:
            return onWake(turn);
    }
}

void UnlockMachine::onFoundUnlocked(Turn& turn) {
    policy_.foundUnlocked();
    emptyActivityLooks_ = 0;
    hasAskedInVain_ = false;
    if (!isAtRest()) returnToIdle(turn);
    if (health_.needsNotice && turn.world.opening == LockOpening::typing) {
        health_.needsNotice = false;
        turn.add(Effect::PasswordHealth{health_});
        turn.add(Effect::AskToUpdatePassword{});
    }
}

void UnlockMachine::onWake(Turn& turn) {
    const UnlockSnapshot& world = turn.world;
    if (world.isSleeping || !isAble(world) || !policy_.acceptWake(world.now)) return;
    if (!world.triggers.contains(UnlockTrigger::onReturn) || !isWaiting()) return;
    rearm(turn);
    startScan(LookReason::wake, turn);
}

void UnlockMachine::on(const Event::Activity& event, Turn& turn) {
    const UnlockSnapshot& world = turn.world;
    if (!world.isLocked || !isAble(world) || world.isSleeping || !isWaiting()) return;
    if (!world.triggers.contains(UnlockTrigger::onReturn)) return;
    const InputActivity& activity = event.activity;
    if (const auto refusal = policy_.activityRefusal(activity.at, activity.quietFor)) {
        logActivityIgnored({.event = logevent::activityIgnored,
                            .sentence = Phrase("Activity ignored: {what}"),
                            .what = *refusal},
                           turn);
    } else if (emptyActivityLooks_ < maxEmptyActivityLooks) {
        startScan(LookReason::activity, turn);
    } else {
        logActivityIgnored(
            {.event = logevent::activityIgnored,
             .sentence = Phrase("Activity ignored: {detail} looks in a row saw nobody"),
             .detail = std::to_string(emptyActivityLooks_)},
            turn);
    }
}

void UnlockMachine::on(Event::CameraFailed& event, Turn& turn) {
    if (currentScan() == nullptr) return;
    turn.add(Effect::StopCamera{});
    fail(UnlockFailure::CameraUnavailable{std::move(event.message)}, turn);
}

void UnlockMachine::on(Event::Frame& event, Turn& turn) {
    Scan* const scan = currentScan();
    if (scan == nullptr || scan->id != event.id) return;
    if (turn.world.now >= scan->deadline) return giveUp(turn);
    if (auto* const face = std::get_if<ScanObservation::Face>(&event.observation)) {
        if (!goesOn(*scan, *face, turn)) return;
    } else {
        scan->wrongFaceSince.reset();
        scan->match.reset();
        scan->livenessConfirmed = false;
        if (std::holds_alternative<ScanObservation::CutOff>(event.observation) &&
            !std::exchange(scan->sawCutOff, true)) {
            turn.log(logevent::faceCutOff, Phrase("The face reaches over the picture’s edge"));
        }
    }
    if (scan->match && scan->livenessConfirmed) conclude(turn);
}

/// False when the frame ended the scan.
bool UnlockMachine::goesOn(Scan& scan, ScanObservation::Face& face, Turn& turn) {
    scan.sawFace = true;
    if (const auto* denied = std::get_if<LivenessDecision::Denied>(&face.decision)) {
        turn.add(Effect::StopCamera{});
        turn.log({.event = logevent::turnedAway,
                  .sentence = Phrase("Turned away: {what}"),
                  .what = title(denied->cue)});
        fail(UnlockFailure::NotLive{}, turn);
        return false;
    }
    scan.livenessConfirmed = std::holds_alternative<LivenessDecision::Confirmed>(face.decision);
    if (!face.match) {
        scan.match.reset();
        scan.livenessConfirmed = false;
        if (!scan.wrongFaceSince) scan.wrongFaceSince = turn.world.now;
        if (turn.world.now - *scan.wrongFaceSince < wrongFaceGrace) return true;
        turn.add(Effect::StopCamera{});
        fail(UnlockFailure::NotRecognised{}, turn);
        return false;
    }
    scan.match = std::move(face.match);
    scan.sawMatch = true;
    scan.wrongFaceSince.reset();
    const auto* waiting = std::get_if<LivenessDecision::Waiting>(&face.decision);
    if (waiting != nullptr && waiting->needs == LivenessNeeds::headTurn && !scan.prompt) {
        scan.prompt = LivenessPrompt::turnHead;
        setOverlay(OverlayPhase::Prompt{}, turn);
        turn.log(logevent::asked, Phrase("Asked: Turn your head a little"));
    }
    return true;
}

void UnlockMachine::on(Event::Typed& event, Turn& turn) {
    if (!std::holds_alternative<Phase::Typing>(phase_)) return;
    struct Handler {
        UnlockMachine& machine;
        Turn& turn;
        void operator()(TypingOutcome::Failed& failed) {
            machine.fail(UnlockFailure::TypingFailed{std::move(failed.message)}, turn);
        }
        void operator()(TypingOutcome::Typed&) {
            machine.phase_ = Phase::Verifying{.since = turn.world.now, .isAsked = false};
            turn.log(logevent::typed, Phrase("Typed the password and Return"));
        }
        void operator()(TypingOutcome::Asked&) {
            machine.phase_ = Phase::Verifying{.since = turn.world.now, .isAsked = true};
            turn.log(logevent::askedDesktop, Phrase("Asked the desktop to unlock"));
        }
        void operator()(TypingOutcome::NotAsked& notAsked) {
            machine.failToOpen(notAsked.reason, std::move(notAsked.detail), turn);
        }
        void operator()(TypingOutcome::Stopped&) {
            machine.policy_.scanEnded(turn.world.now);
            machine.rearm(turn);
        }
    };
    std::visit(Handler{*this, turn}, event.outcome);
}

void UnlockMachine::on(const Event::SpaceKey&, Turn& turn) {
    const UnlockSnapshot& world = turn.world;
    if (!world.isLocked || !isAble(world) || !isWaiting()) return;
    if (!world.triggers.contains(UnlockTrigger::onSpace)) return;
    startScan(LookReason::space, turn);
}

void UnlockMachine::on(const Event::Activate&, Turn& turn) {
    if (!turn.world.isLocked || !isAble(turn.world)) return;
    if (!isWaiting() || std::holds_alternative<Phase::Idle>(phase_)) return;
    startScan(LookReason::hover, turn);
}

void UnlockMachine::on(const Event::SettingsChanged&, Turn& turn) {
    if (!turn.world.isLocked) return;
    if (!isAble(turn.world)) {
        if (!std::holds_alternative<Phase::Failed>(phase_) && !isAtRest()) standDownUnable(turn);
    } else if (!turn.world.showsUI) {
        setOverlay(OverlayPhase::Hidden{}, turn);
    }
}

void UnlockMachine::on(const Event::Tick&, Turn& turn) {
    const auto deadline = nextDeadline();
    if (!deadline || turn.world.now < *deadline) return;
    struct Handler {
        UnlockMachine& machine;
        Turn& turn;
        void operator()(const Phase::Scanning&) { machine.giveUp(turn); }
        void operator()(const Phase::Verifying& verifying) {
            if (!verifying.isAsked) return machine.turnDownPassword(turn);
            machine.failToOpen(Phrase("The screen stayed locked."), {}, turn);
        }
        void operator()(const Phase::Failed&) {
            if (machine.isAble(turn.world)) {
                machine.rearm(turn);
            } else {
                machine.standDownUnable(turn);
            }
        }
        void operator()(const Phase::Idle&) {}
        void operator()(const Phase::Armed&) {}
        void operator()(const Phase::Typing&) {}
    };
    std::visit(Handler{*this, turn}, phase_);
}

// MARK: Steps

void UnlockMachine::syncListeners(Turn& turn) {
    const UnlockSnapshot& world = turn.world;
    const bool isEligible = world.isLocked && isAble(world);
    const bool space =
        isEligible && world.triggers.contains(UnlockTrigger::onSpace) && world.spaceKeyAccess;
    if (std::exchange(listeningForSpace_, space) != space) turn.add(Effect::ListenForSpace{space});
    const bool activity =
        isEligible && world.triggers.contains(UnlockTrigger::onReturn) && !world.isSleeping;
    if (std::exchange(watchingActivity_, activity) != activity) {
        turn.add(Effect::WatchActivity{activity});
    }
}

void UnlockMachine::setOverlay(OverlayPhase phase, Turn& turn) {
    if (phase == overlay_) return;
    const bool leaves = std::holds_alternative<OverlayPhase::Leaving>(phase);
    const bool hides = leaves || std::holds_alternative<OverlayPhase::Hidden>(phase);
    if (!turn.world.showsUI && !hides) return;
    overlay_ = leaves ? OverlayPhase(OverlayPhase::Hidden{}) : phase;
    turn.add(Effect::Overlay{std::move(phase)});
}

void UnlockMachine::startScan(LookReason reason, Turn& turn) {
    if (reason != LookReason::activity) emptyActivityLooks_ = 0;
    scanCount_ = incremented(scanCount_);
    const Date now = turn.world.now;
    const ScanID id{scanCount_};
    phase_ = Phase::Scanning{{.id = id,
                              .startedAt = now,
                              .deadline = now + std::max(minScanDuration, turn.world.scanDuration),
                              .reason = reason}};
    setOverlay(OverlayPhase::Scanning{}, turn);
    turn.add(Effect::StartCamera{id});
    turn.log(
        {.event = logevent::looking, .sentence = Phrase("Looking ({what})"), .what = name(reason)});
}

void UnlockMachine::fail(UnlockFailure failure, Turn& turn) {
    if (const Scan* scan = currentScan(); scan != nullptr && (scan->sawFace || scan->sawCutOff)) {
        emptyActivityLooks_ = 0;
    }
    phase_ = Phase::Failed{failure, turn.world.now + failureHold};
    policy_.scanEnded(turn.world.now);
    const Phrase words = title(failure);
    setOverlay(OverlayPhase::Failure{std::move(failure)}, turn);
    turn.log({.event = logevent::failed, .sentence = Phrase("{what}"), .what = words});
}

void UnlockMachine::standDown(LogLine line, Turn& turn) {
    if (currentScan() != nullptr) turn.add(Effect::StopCamera{});
    phase_ = Phase::Idle{};
    setOverlay(OverlayPhase::Hidden{}, turn);
    turn.log(std::move(line));
}

void UnlockMachine::standDownUnable(Turn& turn) {
    standDown({.event = logevent::stoodDown, .sentence = Phrase("Stood down (can’t unlock now)")},
              turn);
}

void UnlockMachine::returnToIdle(Turn& turn) {
    const auto* verifying = std::get_if<Phase::Verifying>(&phase_);
    // The desktop may have unlocked before the answer to the request came.
    const bool isBeingAsked =
        std::holds_alternative<Phase::Typing>(phase_) && turn.world.opening == LockOpening::asking;
    if (verifying != nullptr || isBeingAsked) {
        if (verifying != nullptr && !verifying->isAsked) {
            health_.failures = 0;
            turn.add(Effect::PasswordHealth{health_});
        }
        turn.log(logevent::unlocked, Phrase("Unlocked"));
    } else if (currentScan() != nullptr) {
        turn.add(Effect::StopCamera{});
    }
    phase_ = Phase::Idle{};
    if (!isHidden()) setOverlay(OverlayPhase::Leaving{}, turn);
}

void UnlockMachine::rearm(Turn& turn) {
    phase_ = Phase::Armed{};
    setOverlay(OverlayPhase::Closed{}, turn);
}

void UnlockMachine::giveUp(Turn& turn) {
    const Scan& scan = *currentScan();
    turn.add(Effect::StopCamera{});
    if (scan.sawMatch) {
        turn.log(logevent::stoppedLooking,
                 Phrase("Stopped looking: the face matched but wasn’t confirmed real"));
        return fail(UnlockFailure::NotLive{}, turn);
    }
    if (scan.sawCutOff) {
        turn.log(logevent::stoppedLooking,
                 Phrase("Stopped looking: the face reached over the picture’s edge"));
        return fail(UnlockFailure::FaceCutOff{}, turn);
    }
    turn.log(logevent::stoppedLooking, Phrase("Stopped looking: no answer in time"));
    if (scan.sawFace) {
        emptyActivityLooks_ = 0;
    } else if (scan.reason == LookReason::activity) {
        emptyActivityLooks_ = incremented(emptyActivityLooks_);
    }
    policy_.scanEnded(turn.world.now);
    rearm(turn);
}

void UnlockMachine::conclude(Turn& turn) {
    const UnlockSnapshot& world = turn.world;
    Scan& scan = *currentScan();
    turn.add(Effect::StopCamera{});
    const auto decision = UnlockGate::decide({.isEnabled = world.isEnabled,
                                              .vaultUnlocked = world.vaultUnlocked,
                                              .passwordSaved = world.passwordSaved,
                                              .screenLocked = world.isLocked,
                                              .accessibilityTrusted = world.accessibilityTrusted,
                                              .faceMatched = scan.match.has_value(),
                                              .livenessConfirmed = scan.livenessConfirmed,
                                              .passwordTrusted = isPasswordTrusted(world)});
    const auto* refuse = std::get_if<UnlockGate::Decision::Refuse>(&decision);
    if (refuse == nullptr) {
        std::string name = scan.match ? std::move(scan.match->name) : std::string();
        phase_ = Phase::Typing{};
        setOverlay(OverlayPhase::Success{}, turn);
        turn.add(Effect::TypePassword{});
        turn.log({.event = logevent::recognised,
                  .sentence = Phrase("Recognised {name}"),
                  .name = std::move(name)});
        return;
    }
    switch (refuse->refusal) {
        case UnlockGate::Refusal::notLocked:
            return returnToIdle(turn);
        case UnlockGate::Refusal::noAccessibility:
            return fail(UnlockFailure::NeedsAccessibility{}, turn);
        case UnlockGate::Refusal::off:
        case UnlockGate::Refusal::vaultLocked:
        case UnlockGate::Refusal::noPassword:
        case UnlockGate::Refusal::passwordRejected:
        case UnlockGate::Refusal::noMatch:
        case UnlockGate::Refusal::notLive:
            return standDown({.event = logevent::stoodDown,
                              .sentence = Phrase("Stood down (refused: {what})"),
                              .what = name(refuse->refusal)},
                             turn);
    }
}

void UnlockMachine::turnDownPassword(Turn& turn) {
    health_.failures = incremented(health_.failures);
    if (health_.failures > 1 && !health_.suspended) {
        health_.suspended = true;
        health_.needsNotice = true;
    }
    turn.add(Effect::PasswordHealth{health_});
    if (health_.suspended) {
        turn.log(logevent::typingSuspended,
                 Phrase("Password turned down twice: typing stops until it’s updated"));
    } else {
        turn.log(logevent::passwordTurnedDown, Phrase("Password turned down"));
    }
    fail(UnlockFailure::PasswordRejected{}, turn);
}

void UnlockMachine::failToOpen(Phrase reason, std::string detail, Turn& turn) {
    hasAskedInVain_ = true;
    std::string message = translated(reason, {{"detail", detail}});
    turn.log({.event = logevent::notUnlocked,
              .sentence = Phrase("Not unlocked: {what}"),
              .what = reason,
              .detail = std::move(detail)});
    fail(UnlockFailure::NotOpened{std::move(message)}, turn);
}

void UnlockMachine::logActivityIgnored(LogLine line, Turn& turn) {
    if (!policy_.fence || policy_.fence == loggedRefusalFor_) return;
    loggedRefusalFor_ = policy_.fence;
    turn.log(std::move(line));
}

// MARK: State

UnlockMachine::Scan* UnlockMachine::currentScan() {
    auto* const scanning = std::get_if<Phase::Scanning>(&phase_);
    return scanning != nullptr ? &scanning->scan : nullptr;
}

bool UnlockMachine::isHidden() const {
    return std::holds_alternative<OverlayPhase::Hidden>(overlay_);
}

bool UnlockMachine::isAtRest() const {
    return std::holds_alternative<Phase::Idle>(phase_) && isHidden();
}

/// Whether a scan may start.
bool UnlockMachine::isWaiting() const {
    return std::holds_alternative<Phase::Idle>(phase_) ||
           std::holds_alternative<Phase::Armed>(phase_) ||
           std::holds_alternative<Phase::Failed>(phase_);
}

bool UnlockMachine::isReady(const UnlockSnapshot& snapshot) const {
    return snapshot.vaultUnlocked && snapshot.passwordSaved && snapshot.hasFace &&
           isPasswordTrusted(snapshot) && !hasAskedInVain_;
}

bool UnlockMachine::isPasswordTrusted(const UnlockSnapshot& snapshot) const {
    return snapshot.opening != LockOpening::typing || !health_.suspended;
}

bool UnlockMachine::isAble(const UnlockSnapshot& snapshot) const {
    return snapshot.isEnabled && isReady(snapshot);
}

}  // namespace marrowby
