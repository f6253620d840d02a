// SPDX-License-Identifier: Apache-2.0
#include "Unlock/SelfCheck.h"

#include "Unlock/Model/ModelLoaders.h"
#include "UnlockCore/Foundation/Phrase.h"
#include "UnlockCore/LockScreenServices/CameraFaceScanner.h"
#include "UnlockCore/Status/UnlockStatus.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <utility>

namespace marrowby {

namespace {

constexpr auto cameraFix = Phrase("Connect a camera, or end the program that uses it.");

constexpr auto switchItOn = Phrase("Switch it on in {place}.");

std::string permissionName(CameraManager::Permission permission) {
    switch (permission) {
        case CameraManager::Permission::notDetermined:
            return translated("not asked for yet.");
        case CameraManager::Permission::granted:
            return translated("granted.");
        case CameraManager::Permission::denied:
            return translated("denied.");
        case CameraManager::Permission::restricted:
            return translated("restricted on this computer.");
    }
    return {};
}

std::string seconds(TimeInterval interval) {
    const auto hundredths = std::llround(interval.count() * 100);
    const auto rest = std::to_string(hundredths % 100);
    return translated("{seconds} s", {{"seconds", std::to_string(hundredths / 100) +
                                                      (rest.size() < 2 ? ".0" : ".") + rest}});
}

std::string pixels(const Size& size) {
    return std::to_string(std::llround(size.width)) + " × " +
           std::to_string(std::llround(size.height));
}

std::string cameraInWords(const std::optional<CameraManager::Opened>& camera) {
    if (!camera) return translated("none");
    const std::string& name = camera->device.name;
    const Filling named("camera", name.empty() ? translated("one without a name") : name);
    if (!camera->format) return translated("{camera}, in a format of its own", {named});
    const Filling size("size", pixels({.width = static_cast<double>(camera->format->width),
                                       .height = static_cast<double>(camera->format->height)}));
    const auto rate = camera->format->frameRate;
    if (!rate) return translated("{camera}, set to {size}", {named, size});
    return translated("{camera}, set to {size} at {rate} a second",
                      {named, size, {"rate", std::llround(*rate)}});
}

}  // namespace

SelfCheck::SelfCheck(Services services, std::function<void(const std::string&)> onLine,
                     std::function<void(bool)> onEnd)
    : services_(std::move(services)),
      onLine_(std::move(onLine)),
      onEnd_(std::move(onEnd)),
      camera_(services_.camera,
              {.queues = services_.queues,
               .mainThread = services_.mainThread,
               .clock = services_.clock,
               .imaging = services_.imaging,
               .registry = cameraUse_},
              CameraFaceScanner::workingLongEdge) {}

void SelfCheck::start() {
    if (services_.sessionUnlocking == nullptr) return checkAll();
    // How the lock opens is known once they have answered.
    const auto goOn = weakSelf_.guarded([](SelfCheck& self, const auto&... /*answer*/) {
        if (!self.answerTimeout_) return;
        self.services_.mainThread.post(
            [timeout = std::shared_ptr<MainThread::Timer>(std::move(self.answerTimeout_))] {});
        self.checkAll();
    });
    answerTimeout_ = services_.mainThread.at(services_.clock.now() + longestAnswer,
                                             TimeInterval(0.1), [goOn] { goOn(); });
    services_.sessionUnlocking->read([goOn](const SessionUnlockFacts& facts) {
        // Unknown, it may be found before the time is up.
        if (facts.isLocked) goOn();
    });
}

void SelfCheck::checkAll() {
    checkPermissions();
    checkSession();
    checkModels();
    checkKeyStore();
    checkOwner();
    checkOpening();
    checkWindowSpace();
    startCamera();
}

void SelfCheck::say(const Fact& fact) {
    isAllThere_ = isAllThere_ && !fact.isMissing();
    onLine_(fact.line());
}

void SelfCheck::checkPermissions() {
    const PlatformWords& words = services_.words;
    const auto camera = camera_.permission();
    say({.subject = translated("Camera permission"),
         .isGood = camera == CameraManager::Permission::granted,
         .what = permissionName(camera),
         .fix = words.camera.advice(switchItOn)});
    const bool isTyped = services_.sessionUnlocking == nullptr ||
                         services_.sessionUnlocking->opening() == LockOpening::typing;
    const bool isTrusted = services_.keyEvents.isTrusted();
    if (isTyped)
        say({.subject = translated(words.typing.rightAtStart),
             .isGood = isTrusted,
             .what = isTrusted ? translated("granted.") : translated("not granted."),
             .fix = words.accessibility.advice(switchItOn)});
    const bool mayWatch = services_.spaceKeys.hasListenAccess();
    say({.subject = translated("Watching keys"),
         .isGood = mayWatch,
         .what = mayWatch ? translated("granted.")
                          : translated("not granted, so Space starts nothing; any activity does."),
         .fix = words.inputMonitoring.advice(switchItOn),
         .need = Fact::Need::optional});
}

void SelfCheck::checkSession() {
    const auto facts = services_.sessionInWords();
    const std::string fix = translated("Start it in the session in front of you.");
    if (!facts) {
        say({.subject = translated("Session"),
             .isGood = false,
             .what = translated("there is no session to ask about."),
             .fix = fix});
        return;
    }
    say({.subject = translated("Session"),
         .isGood = services_.lockState.state().isOnConsole.value_or(false),
         .what = facts->empty() ? translated("it says nothing of itself.")
                                : translated("{facts}.", {{"facts", *facts}}),
         .fix = fix});
}

void SelfCheck::checkModels() {
    const auto missing = [this](const std::string& why) {
        say({.subject = translated("Models"),
             .isGood = false,
             .what = why,
             .fix = services_.preparingAdvice});
    };
    if (!services_.pack) return missing(services_.pack.error());
    const ModelPack& pack = *services_.pack;
    const Date began = services_.clock.now();
    const auto embedder =
        embedderLoader(pack, services_.models, services_.imaging, services_.words)();
    if (!embedder) return missing(description(embedder.error()));
    const auto realFace = antiSpoofLoader(pack, services_.models, services_.words)();
    if (!realFace) return missing(description(realFace.error()));
    say({.subject = translated("Models"),
         .isGood = true,
         .what = translated(
             "{models}, loaded in {time}.",
             {{"models", pack.name}, {"time", seconds(services_.clock.now() - began)}})});
}

void SelfCheck::checkKeyStore() {
    VaultKeyStore& store = services_.trialKeyStore;
    const PlatformWords& words = services_.words;
    const auto tell = [&](bool isGood, std::string what) {
        say({.subject = translated("Key store"),
             .isGood = isGood,
             .what = std::move(what),
             .fix = translated(words.keyStore.remedy)});
    };
    std::array<std::uint8_t, 32> key{};
    if (!services_.cipher.random(key))
        return tell(false, translated("the system has no random numbers."));
    const auto saved = store.saveKey(key);
    auto loaded = store.loadKey();
    const auto kept = loaded ? std::move(*loaded) : std::optional<SecretBytes>();
    const bool isSame = kept && std::ranges::equal(kept->values(), key);
    const auto deleted = store.deleteKey();
    if (!saved) return tell(false, description(saved.error(), words));
    if (!loaded) return tell(false, description(loaded.error(), words));
    if (!deleted) return tell(false, description(deleted.error(), words));
    tell(isSame, isSame ? translated("a key was kept, read and removed.")
                        : translated("it gave another key back."));
}

void SelfCheck::checkOwner() {
    const auto possible = services_.ownerCheck.canConfirm();
    say({.subject = translated("Owner’s check"),
         .isGood = possible.has_value(),
         .what = possible ? translated("available.") : possible.error(),
         .fix = translated(services_.words.ownerCheck.remedy)});
}

void SelfCheck::checkOpening() {
    const SessionUnlocking* const session = services_.sessionUnlocking;
    const LockOpening opening = session != nullptr ? session->opening() : LockOpening::typing;
    if (opening == LockOpening::typing) return checkTyping();
    Fact fact{.subject = translated("Opening the lock"), .isGood = false, .what = {}};
    if (isClosed(opening)) {
        fact.what = translated(reasonNotPossible(opening));
    } else {
        fact.isGood = session->isSessionKnown();
        fact.what = fact.isGood ? translated("the desktop is asked, without a password.")
                                : translated("logind doesn’t answer about this session.");
    }
    say(fact);
}

void SelfCheck::checkTyping() {
    Fact typing{.subject = translated("Typing"),
                .isGood = false,
                .what = translated("the system takes no keys from this program."),
                .fix = services_.words.accessibility.advice(switchItOn)};
    if (services_.keyEvents.canType()) {
        typing.isGood = services_.keyEvents.makeSource({}, {}) != nullptr;
        typing.what = typing.isGood ? translated("allowed.")
                                    : translated("allowed, but no keyboard could be made.");
    }
    say(typing);
}

void SelfCheck::checkWindowSpace() {
    const bool isFound = services_.windowServer.hasLockScreenSpaces();
    say({.subject = translated("Space above the lock screen"),
         .isGood = isFound,
         .what = isFound ? translated("found.")
                         : translated("not found, so the island lies where this system lets it."),
         .need = Fact::Need::optional});
}

void SelfCheck::startCamera() {
    cameraBegan_ = services_.clock.now();
    camera_.setOnFrame([ends = weakSelf_.guarded(&SelfCheck::cameraEnds),
                        &mainThread = services_.mainThread](const CameraFrame& frame) {
        mainThread.post([ends, size = frame.sourceSize] { ends(size); });
    });
    // Starting without permission would prompt the user.
    const bool isAllowed = camera_.permission() == CameraManager::Permission::granted;
    const auto started = isAllowed ? camera_.start(std::nullopt)
                                   : std::expected<void, CameraError>(
                                         std::unexpected(CameraError(CameraError::NotAllowed{})));
    if (started) {
        timeout_ = services_.mainThread.at(cameraBegan_ + longestWait, TimeInterval(0.5),
                                           [this] { cameraEnds(std::nullopt); });
        return;
    }
    say({.subject = translated("Camera"),
         .isGood = false,
         .what = description(started.error(), services_.words),
         .fix = translated(cameraFix)});
    onEnd_(isAllThere_);
}

void SelfCheck::cameraEnds(const std::optional<Size>& picture) {
    if (!timeout_) return;
    // Kept alive: the timer may be the caller.
    const auto timeout = std::exchange(timeout_, nullptr);
    const TimeInterval took = services_.clock.now() - cameraBegan_;
    const Filling camera("camera", cameraInWords(camera_.opened()));
    camera_.stop();
    say({.subject = translated("Camera"),
         .isGood = picture.has_value(),
         .what = picture ? translated("{camera}; first picture of {size} after {time}.",
                                      {camera, {"size", pixels(*picture)}, {"time", seconds(took)}})
                         : translated("{camera}; no picture came within {time}.",
                                      {camera, {"time", seconds(longestWait)}}),
         .fix = translated(cameraFix)});
    const auto onEnd = onEnd_;
    onEnd(isAllThere_);
}

}  // namespace marrowby
