// SPDX-License-Identifier: Apache-2.0
#include "Unlock/Model/EngineHost.h"

#include "Unlock/Model/ModelLoaders.h"

#include <utility>

namespace marrowby {

using Event = UnlockCoordinator::Event;

namespace {

std::unique_ptr<SessionUnlockAsker> makeAsker(const UnlockPlatform& platform,
                                              std::function<UnlockReadiness()> readiness) {
    if (platform.sessionUnlocking == nullptr) return nullptr;
    return std::make_unique<SessionUnlockAsker>(SessionUnlockAsker::Services{
        .session = *platform.sessionUnlocking,
        .mainThread = platform.mainThread,
        .clock = platform.clock,
        .isWanted = [readiness = std::move(readiness)] {
            const UnlockReadiness now = readiness();
            return now.opening == LockOpening::asking && now.isEnabled && now.vaultUnlocked &&
                   now.passwordSaved;
        }});
}

}  // namespace

PasswordTyping& EngineHost::Opener::way() const {
    const bool types = host_.platform_.opening() == LockOpening::typing;
    return types ? static_cast<PasswordTyping&>(host_.typer_) : *host_.asker_;
}

void EngineHost::Opener::expectTyping(std::function<bool()> stillLocked) {
    way().expectTyping(std::move(stillLocked));
}

void EngineHost::Opener::typeStoredPassword(std::function<bool()> stillLocked,
                                            std::function<void(TypingOutcome)> completion) {
    way().typeStoredPassword(std::move(stillLocked), std::move(completion));
}

EngineHost::EngineHost(const Services& services, PasswordHealth health,
                       UnlockCoordinator::Callbacks callbacks)
    : platform_(services.platform),
      ownKeystrokes_(platform_.inputIdle),
      keyEvents_(platform_.keyEvents, ownKeystrokes_),
      inputIdle_(platform_.inputIdle, ownKeystrokes_),
      scanner_(
          platform_.scanCamera,
          {.queues = platform_.queues,
           .mainThread = platform_.mainThread,
           .clock = platform_.clock,
           .imaging = platform_.imaging,
           .vision = platform_.scanVision,
           .fourier = platform_.fourier,
           .registry = services.cameraUse,
           .words = platform_.words},
          embedderLoader(services.models, platform_.models, platform_.imaging, platform_.words),
          antiSpoofLoader(services.models, platform_.models, platform_.words)),
      typer_(services.credentials, keyEvents_, platform_.queues, platform_.mainThread,
             platform_.clock, platform_.words),
      asker_(makeAsker(platform_, services.readiness)),
      spaceKeys_(platform_.spaceKeys, ownKeystrokes_),
      activity_(inputIdle_, platform_.mainThread, platform_.clock),
      clock_(platform_.clock, platform_.mainThread),
      lockScreen_(platform_.windowServer, platform_.lockState),
      island_({.lockScreen = lockScreen_,
               .mainThread = platform_.mainThread,
               .clock = platform_.clock}),
      coordinator_(health,
                   {.lockState = platform_.lockState,
                    .scanner = scanner_,
                    .typer = opener_,
                    .presenter = &island_,
                    .spaceKeys = spaceKeys_,
                    .activity = activity_,
                    .clock = clock_,
                    .readiness = services.readiness,
                    .activeDisplays = [this] { return platform_.windowServer.activeDisplays(); }}) {
    coordinator_.setCallbacks(std::move(callbacks));
    island_.onHover = [this] { coordinator_.send(Event::Activate{}); };
    spaceKeys_.onSpace = [this] { coordinator_.send(Event::SpaceKey{}); };
    activity_.onActivity = [this](const InputActivity& input) {
        coordinator_.send(Event::Activity{input});
    };
    scanner_.follow(platform_.lockState.state().isScreenLocked.value_or(false));
}

void EngineHost::follow(LockEvent event) {
    if (event == LockEvent::screenLocked && platform_.activities != nullptr)
        lockedActivity_ = platform_.activities->begin("Waiting for you at the lock screen");
    if (event == LockEvent::screenUnlocked) lockedActivity_.reset();
    if (event == LockEvent::screenLocked || event == LockEvent::screenUnlocked)
        scanner_.follow(event == LockEvent::screenLocked);
    coordinator_.setSleeping(platform_.lockEvents.isSleeping());
    coordinator_.send(Event::Lock{event});
}

}  // namespace marrowby
