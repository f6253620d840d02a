// SPDX-License-Identifier: Apache-2.0
#include "Unlock/SelfCheck.h"

#include "Unlock/Model/ModelLoaders.h"
#include "UnlockCore/LockScreenServices/CameraFaceScanner.h"
#include "UnlockCore/Status/UnlockStatus.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <utility>

namespace marrowby {

namespace {

constexpr std::string_view cameraFix = "Connect a camera, or end the program that uses it.";

std::string permissionName(CameraManager::Permission permission) {
    switch (permission) {
        case CameraManager::Permission::notDetermined:
            return "not asked for yet.";
        case CameraManager::Permission::granted:
            return "granted.";
        case CameraManager::Permission::denied:
            return "denied.";
        case CameraManager::Permission::restricted:
            return "restricted on this computer.";
    }
    return {};
}

std::string seconds(TimeInterval interval) {
    const auto hundredths = std::llround(interval.count() * 100);
    const auto rest = std::to_string(hundredths % 100);
    return std::to_string(hundredths / 100) + (rest.size() < 2 ? ".0" : ".") + rest + " s";
}

std::string pixels(const Size& size) {
    return std::to_string(std::llround(size.width)) + " × " +
           std::to_string(std::llround(size.height));
}

std::string cameraInWords(const std::optional<CameraManager::Opened>& camera) {
    if (!camera) return "none";
    const std::string& name = camera->device.name;
    std::string text = name.empty() ? "one without a name" : name;
    if (!camera->format) return text + ", in a format of its own";
    text += ", set to " + pixels({.width = static_cast<double>(camera->format->width),
                                  .height = static_cast<double>(camera->format->height)});
    if (const auto rate = camera->format->frameRate)
        text += " at " + std::to_string(std::llround(*rate)) + " a second";
    return text;
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
    say({.subject = "Camera permission",
         .isGood = camera == CameraManager::Permission::granted,
         .what = permissionName(camera),
         .fix = words.camera.advice("Switch it on in ")});
    const bool isTyped = services_.sessionUnlocking == nullptr ||
                         services_.sessionUnlocking->opening() == LockOpening::typing;
    const bool isTrusted = services_.keyEvents.isTrusted();
    if (isTyped)
        say({.subject = words.typing.rightAtStart,
             .isGood = isTrusted,
             .what = isTrusted ? "granted." : "not granted.",
             .fix = words.accessibility.advice("Switch it on in ")});
    const bool mayWatch = services_.spaceKeys.hasListenAccess();
    say({.subject = "Watching keys",
         .isGood = mayWatch,
         .what = mayWatch ? "granted." : "not granted, so Space starts nothing; any activity does.",
         .fix = words.inputMonitoring.advice("Switch it on in "),
         .need = Fact::Need::optional});
}

void SelfCheck::checkSession() {
    const auto facts = services_.sessionInWords();
    const std::string_view fix = "Start it in the session in front of you.";
    if (!facts) {
        say({.subject = "Session",
             .isGood = false,
             .what = "there is no session to ask about.",
             .fix = std::string(fix)});
        return;
    }
    say({.subject = "Session",
         .isGood = services_.lockState.state().isOnConsole.value_or(false),
         .what = facts->empty() ? "it says nothing of itself." : *facts + ".",
         .fix = std::string(fix)});
}

void SelfCheck::checkModels() {
    const auto missing = [this](const std::string& why) {
        say({.subject = "Models", .isGood = false, .what = why, .fix = services_.preparingAdvice});
    };
    if (!services_.pack) return missing(services_.pack.error());
    const ModelPack& pack = *services_.pack;
    const Date began = services_.clock.now();
    const auto embedder =
        embedderLoader(pack, services_.models, services_.imaging, services_.words)();
    if (!embedder) return missing(description(embedder.error()));
    const auto realFace = antiSpoofLoader(pack, services_.models, services_.words)();
    if (!realFace) return missing(description(realFace.error()));
    say({.subject = "Models",
         .isGood = true,
         .what = pack.name + ", loaded in " + seconds(services_.clock.now() - began) + "."});
}

void SelfCheck::checkKeyStore() {
    VaultKeyStore& store = services_.trialKeyStore;
    const PlatformWords& words = services_.words;
    const auto tell = [&](bool isGood, std::string what) {
        say({.subject = "Key store",
             .isGood = isGood,
             .what = std::move(what),
             .fix = std::string(words.keyStore.remedy)});
    };
    std::array<std::uint8_t, 32> key{};
    if (!services_.cipher.random(key)) return tell(false, "the system has no random numbers.");
    const auto saved = store.saveKey(key);
    auto loaded = store.loadKey();
    const auto kept = loaded ? std::move(*loaded) : std::optional<SecretBytes>();
    const bool isSame = kept && std::ranges::equal(kept->values(), key);
    const auto deleted = store.deleteKey();
    if (!saved) return tell(false, description(saved.error(), words));
    if (!loaded) return tell(false, description(loaded.error(), words));
    if (!deleted) return tell(false, description(deleted.error(), words));
    tell(isSame, isSame ? "a key was kept, read and removed." : "it gave another key back.");
}

void SelfCheck::checkOwner() {
    const auto possible = services_.ownerCheck.canConfirm();
    say({.subject = "Owner’s check",
         .isGood = possible.has_value(),
         .what = possible ? "available." : possible.error(),
         .fix = std::string(services_.words.ownerCheck.remedy)});
}

void SelfCheck::checkOpening() {
    const SessionUnlocking* const session = services_.sessionUnlocking;
    const LockOpening opening = session != nullptr ? session->opening() : LockOpening::typing;
    if (opening == LockOpening::typing) return checkTyping();
    Fact fact{.subject = "Opening the lock", .isGood = false, .what = {}};
    if (isClosed(opening)) {
        fact.what = reasonNotPossible(opening);
    } else {
        fact.isGood = session->isSessionKnown();
        fact.what = fact.isGood ? "the desktop is asked, without a password."
                                : "logind doesn’t answer about this session.";
    }
    say(fact);
}

void SelfCheck::checkTyping() {
    Fact typing{.subject = "Typing",
                .isGood = false,
                .what = "the system takes no keys from this program.",
                .fix = services_.words.accessibility.advice("Switch it on in ")};
    if (services_.keyEvents.canType()) {
        typing.isGood = services_.keyEvents.makeSource({}, {}) != nullptr;
        typing.what = typing.isGood ? "allowed." : "allowed, but no keyboard could be made.";
    }
    say(typing);
}

void SelfCheck::checkWindowSpace() {
    const bool isFound = services_.windowServer.hasLockScreenSpaces();
    say({.subject = "Space above the lock screen",
         .isGood = isFound,
         .what = isFound ? "found." : "not found, so the island lies where this system lets it.",
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
    say({.subject = "Camera",
         .isGood = false,
         .what = description(started.error(), services_.words),
         .fix = std::string(cameraFix)});
    onEnd_(isAllThere_);
}

void SelfCheck::cameraEnds(const std::optional<Size>& picture) {
    if (!timeout_) return;
    // Kept alive: the timer may be the caller.
    const auto timeout = std::exchange(timeout_, nullptr);
    const TimeInterval took = services_.clock.now() - cameraBegan_;
    camera_.stop();
    say({.subject = "Camera",
         .isGood = picture.has_value(),
         .what =
             cameraInWords(camera_.opened()) +
             (picture ? "; first picture of " + pixels(*picture) + " after " + seconds(took) + "."
                      : "; no picture came within " + seconds(longestWait) + "."),
         .fix = std::string(cameraFix)});
    const auto onEnd = onEnd_;
    onEnd(isAllThere_);
}

}  // namespace marrowby
