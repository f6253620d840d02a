// SPDX-License-Identifier: Apache-2.0
#include "UnlockCore/Engine/UnlockCoordinator.h"

#include <algorithm>
#include <cassert>
#include <utility>
#include <variant>

namespace marrowby {

using Effect = UnlockMachine::Effect;

/// Carries out the effects of one event.
struct UnlockCoordinator::Performer {
    UnlockCoordinator& owner;
    Date now;

    void operator()(const Effect::Overlay& overlay) {
        if (auto* const presenter = owner.collaborators_.presenter) presenter->show(overlay.phase);
    }
    void operator()(const Effect::StartCamera& start) { owner.startScan(start.id, now); }
    void operator()(const Effect::ListenForSpace& listen) {
        listen.on ? owner.collaborators_.spaceKeys.start() : owner.collaborators_.spaceKeys.stop();
    }
    void operator()(const Effect::WatchActivity& watch) {
        watch.on ? owner.collaborators_.activity.start() : owner.collaborators_.activity.stop();
    }
    void operator()(const Effect::PasswordHealth& changed) {
        if (owner.callbacks_.onHealthChange) owner.callbacks_.onHealthChange(changed.health);
    }
    void operator()(const Effect::Log& log) {
        if (owner.callbacks_.onLog) owner.callbacks_.onLog(log.line);
    }
    void operator()(const Effect::StopCamera&) { owner.collaborators_.scanner.stop(); }
    void operator()(const Effect::TypePassword&) { owner.typePassword(); }
    void operator()(const Effect::AskToUpdatePassword&) {
        if (owner.callbacks_.onAskToUpdatePassword) owner.callbacks_.onAskToUpdatePassword();
    }
};

UnlockCoordinator::UnlockCoordinator(PasswordHealth health, Collaborators collaborators)
    : machine_(health, collaborators.readiness().triggers),
      collaborators_(std::move(collaborators)),
      reading_(read(collaborators_.clock.now())) {}

void UnlockCoordinator::replacePasswordHealth(PasswordHealth health) {
    machine_.replaceHealth(health);
    send(Event::SettingsChanged{});
}

void UnlockCoordinator::send(Event event) {
    assert(isOnOwnThread());
    queue_.push_back(std::move(event));
    if (isHandling_) return;
    isHandling_ = true;
    while (!queue_.empty()) {
        Event next = std::move(queue_.front());
        queue_.pop_front();
        handle(std::move(next));
    }
    isHandling_ = false;
}

void UnlockCoordinator::handle(Event event) {
    const Date now = collaborators_.clock.now();
    if (!std::holds_alternative<Event::Frame>(event) || !isReadingRecent(now) ||
        machine_.hasEffects(event, snapshot(now))) {
        reading_ = read(now);
    }
    if (road_) note(event, *road_, now);
    for (const Effect& effect : machine_.handle(std::move(event), snapshot(now)))
        std::visit(Performer{*this, now}, effect);
    rescheduleTimer();
    if (callbacks_.onChange) callbacks_.onChange();
}

UnlockCoordinator::Reading UnlockCoordinator::read(Date now) const {
    Reading reading{.readiness = collaborators_.readiness(),
                    .hasFace = false,
                    .isLocked = collaborators_.lockState.isLocked(),
                    .at = now};
    reading.hasFace = std::ranges::any_of(
        *reading.readiness.scan.identities,
        [](const FaceIdentity& face) { return face.isEnabled && !face.samples.empty(); });
    return reading;
}

bool UnlockCoordinator::isReadingRecent(Date now) const {
    // The clock may have been set back.
    const TimeInterval age = now - reading_.at;
    return age >= TimeInterval(0) && age < longestReadingAge;
}

UnlockSnapshot UnlockCoordinator::snapshot(Date now) const {
    const UnlockReadiness& readiness = reading_.readiness;
    return {.now = now,
            .isLocked = reading_.isLocked,
            .isSleeping = isSleeping_,
            .isEnabled = readiness.isEnabled,
            .triggers = readiness.triggers,
            .showsUI = readiness.showsUI,
            .scanDuration = readiness.scanDuration,
            .vaultUnlocked = readiness.vaultUnlocked,
            .opening = readiness.opening,
            .passwordSaved = readiness.passwordSaved,
            .hasFace = reading_.hasFace,
            .accessibilityTrusted = readiness.accessibilityTrusted,
            .spaceKeyAccess = readiness.spaceKeyAccess};
}

void UnlockCoordinator::rescheduleTimer() {
    const auto next = machine_.nextDeadline();
    if (next && deadline_ && deadline_->at == *next) return;
    deadline_.reset();
    if (!next) return;
    deadline_ = Deadline{
        *next, collaborators_.clock.schedule(*next, weakSelf_.guarded([](UnlockCoordinator& self) {
            self.deadline_.reset();
            self.send(Event::Tick{});
        }))};
}

void UnlockCoordinator::note(const Event& event, UnlockRoad& road, Date now) {
    using Step = UnlockRoad::Step;
    if (const auto* const frame = std::get_if<Event::Frame>(&event)) {
        road.reach(Step::firstPicture, now);
        const auto* const face = std::get_if<ScanObservation::Face>(&frame->observation);
        if (face != nullptr) road.reach(Step::firstFace, now);
        if (face != nullptr && face->match) road.reach(Step::firstMatch, now);
    } else if (const auto* const ended = std::get_if<Event::Typed>(&event)) {
        if (const auto* const typed = std::get_if<TypingOutcome::Typed>(&ended->outcome)) {
            if (typed->firstKeyAt) road.reach(Step::firstKey, *typed->firstKeyAt);
            road.reach(Step::typed, now);
            if (callbacks_.onLog) callbacks_.onLog(road.line());
        }
        road_.reset();
    }
}

void UnlockCoordinator::startScan(ScanID scan, Date now) {
    road_.emplace(now);
    ScanConfiguration configuration = reading_.readiness.scan;
    configuration.cameraID = reading_.readiness.camera.cameraID(
        collaborators_.activeDisplays ? collaborators_.activeDisplays() : ActiveDisplays());
    collaborators_.scanner.start(
        scan, configuration,
        {.onFrame =
             weakSelf_.guarded([](UnlockCoordinator& self, ScanID id, ScanObservation observation) {
                 self.send(Event::Frame{id, std::move(observation)});
             }),
         .onCameraFailed = weakSelf_.guarded([](UnlockCoordinator& self, std::string message) {
             self.send(Event::CameraFailed{std::move(message)});
         }),
         .onOtherCamera =
             weakSelf_.guarded([](const UnlockCoordinator& self, const std::string& camera) {
                 if (self.callbacks_.onLog)
                     self.callbacks_.onLog({.event = logevent::cameraMissing,
                                            .sentence = Phrase("The chosen camera isn’t connected: "
                                                               "looking through {detail}"),
                                            .detail = camera});
             })});
    // The failure of a camera is handled after this.
    if (road_) road_->reach(UnlockRoad::Step::cameraAsked, collaborators_.clock.now());
    collaborators_.typer.expectTyping(stillLocked());
}

std::function<bool()> UnlockCoordinator::stillLocked() const {
    return [&lockState = collaborators_.lockState] { return lockState.isLocked(); };
}

void UnlockCoordinator::typePassword() {
    if (road_) road_->reach(UnlockRoad::Step::confirmed, collaborators_.clock.now());
    collaborators_.typer.typeStoredPassword(
        stillLocked(), weakSelf_.guarded([](UnlockCoordinator& self, TypingOutcome outcome) {
            self.send(Event::Typed{std::move(outcome)});
        }));
}

}  // namespace marrowby
