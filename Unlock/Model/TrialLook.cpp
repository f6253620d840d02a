// SPDX-License-Identifier: Apache-2.0
#include "Unlock/Model/TrialLook.h"

#include <utility>
#include <variant>

namespace marrowby {

using Event = UnlockCoordinator::Event;

TrialLook::TrialLook(const Services& services, UnlockReadiness readiness,
                     std::function<void(const Result&)> onEnd)
    : services_(services),
      onEnd_(std::move(onEnd)),
      clock_(services.clock, services.mainThread),
      coordinator_({}, {.lockState = locked_,
                        .scanner = services.scanner,
                        .typer = *this,
                        .presenter = this,
                        .spaceKeys = deaf_,
                        .activity = deaf_,
                        .clock = clock_,
                        .readiness =
                            [readiness = std::move(readiness)] {
                                UnlockReadiness shown = readiness;
                                shown.isEnabled = shown.showsUI = true;
                                return shown;
                            },
                        .activeDisplays =
                            [&windowServer = services.windowServer] {
                                return windowServer.activeDisplays();
                            }}) {
    coordinator_.setCallbacks({.onHealthChange = {},
                               .onAskToUpdatePassword = {},
                               .onLog =
                                   [this](const LogLine& line) {
                                       if (isLooking_) note(line);
                                   },
                               .onChange = {}});
}

TrialLook::~TrialLook() {
    if (isLooking_ && !hasEnded_) services_.scanner.stop();
}

void TrialLook::start() {
    coordinator_.send(Event::Lock{LockEvent::screenLocked});
    isLooking_ = true;
    coordinator_.send(Event::Activate{});
    // Not even armed: the vault was locked or the faces are gone.
    if (!hasLooked_) end(false);
}

void TrialLook::note(const LogLine& line) {
    // Why it looks is known.
    if (line.event == logevent::looking) {
        hasLooked_ = true;
    } else {
        lines_.push_back(line.shown());
    }
}

void TrialLook::show(const OverlayPhase& phase) {
    const bool isOver = std::holds_alternative<OverlayPhase::Failure>(phase) ||
                        std::holds_alternative<OverlayPhase::Closed>(phase) ||
                        std::holds_alternative<OverlayPhase::Hidden>(phase);
    if (!isLooking_ || !isOver) return;
    if (const auto* failed = std::get_if<OverlayPhase::Failure>(&phase)) {
        if (const auto* camera = std::get_if<UnlockFailure::CameraUnavailable>(&failed->failure))
            message_ = camera->message;
    }
    end(false);
}

void TrialLook::typeStoredPassword(std::function<bool()> /*stillLocked*/,
                                   std::function<void(TypingOutcome)> /*completion*/) {
    end(true);
}

void TrialLook::end(bool wouldUnlock) {
    if (std::exchange(hasEnded_, true)) return;
    services_.mainThread.post(weakSelf_.guarded([wouldUnlock](TrialLook& self) {
        const auto onEnd = self.onEnd_;
        if (!self.message_.empty()) self.lines_.push_back(std::move(self.message_));
        onEnd({.wouldUnlock = wouldUnlock, .lines = std::move(self.lines_)});
    }));
}

}  // namespace marrowby
