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
    const UnlockReadiness& readiness;

    void operator()(const Effect::Overlay& overlay) {
        if (auto* const presenter = owner.collaborators_.presenter) presenter->show(overlay.phase);
    }
    void operator()(const Effect::StartCamera& start) { owner.startLook(start.id, readiness.scan); }
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
      collaborators_(std::move(collaborators)) {}

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
    const UnlockReadiness readiness = collaborators_.readiness();
    for (const Effect& effect : machine_.handle(std::move(event), snapshot(readiness))) {
        std::visit(Performer{*this, readiness}, effect);
    }
    rescheduleTimer();
    if (callbacks_.onChange) callbacks_.onChange();
}

UnlockSnapshot UnlockCoordinator::snapshot(const UnlockReadiness& readiness) const {
    const bool hasFace = std::ranges::any_of(
        readiness.scan.identities,
        [](const FaceIdentity& face) { return face.isEnabled && !face.samples.empty(); });
    return {.now = collaborators_.clock.now(),
            .isLocked = collaborators_.lockState.isLocked(),
            .isSleeping = isSleeping_,
            .isEnabled = readiness.isEnabled,
            .triggers = readiness.triggers,
            .showsUI = readiness.showsUI,
            .scanDuration = readiness.scanDuration,
            .vaultUnlocked = readiness.vaultUnlocked,
            .passwordSaved = readiness.passwordSaved,
            .hasFace = hasFace,
            .accessibilityTrusted = readiness.accessibilityTrusted,
            .spaceKeyAccess = readiness.spaceKeyAccess};
}

void UnlockCoordinator::rescheduleTimer() {
    if (timer_) timer_->cancel();
    timer_.reset();
    if (const auto deadline = machine_.nextDeadline()) {
        timer_ = collaborators_.clock.schedule(*deadline, [weak = std::weak_ptr(self_)] {
            if (const auto self = weak.lock()) self->send(Event::Tick{});
        });
    }
}

void UnlockCoordinator::startLook(LookID look, const ScanConfiguration& configuration) {
    const std::weak_ptr weak(self_);
    collaborators_.scanner.start(look, configuration,
                                 {.onFrame =
                                      [weak](LookID id, ScanObservation observation) {
                                          if (const auto self = weak.lock()) {
                                              self->send(Event::Frame{id, std::move(observation)});
                                          }
                                      },
                                  .onCameraFailed =
                                      [weak](std::string message) {
                                          if (const auto self = weak.lock()) {
                                              self->send(Event::CameraFailed{std::move(message)});
                                          }
                                      }});
}

void UnlockCoordinator::typePassword() {
    collaborators_.typer.typeStoredPassword(
        [&lockState = collaborators_.lockState] { return lockState.isLocked(); },
        [weak = std::weak_ptr(self_)](TypingOutcome outcome) {
            if (const auto self = weak.lock()) self->send(Event::Typed{std::move(outcome)});
        });
}

}  // namespace marrowby
