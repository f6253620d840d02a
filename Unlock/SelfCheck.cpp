#include "Unlock/SelfCheck.h"

#include "UnlockCore/Liveness/MiniFASNet.h"
#include "UnlockCore/LockScreenServices/CameraFaceScanner.h"
#include "UnlockCore/Recognition/SFaceEmbedder.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <utility>

namespace marrowby {

namespace {

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

/// Error texts of the system may lack a full stop.
std::string sentence(std::string text) {
    if (text.empty()) return "the system doesn’t say why.";
    if (text.back() != '.') text += '.';
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
    checkPermissions();
    checkSession();
    checkModels();
    checkKeyStore();
    checkOwner();
    checkTyping();
    checkWindowSpace();
    startCamera();
}

void SelfCheck::say(std::string_view subject, bool isGood, const std::string& what, Need need) {
    const bool isMissing = !isGood && need == Need::needed;
    isAllThere_ = isAllThere_ && !isMissing;
    const std::string_view mark = isGood ? "ok  " : isMissing ? "NO  " : "-   ";
    std::string line = std::string(mark).append(subject).append(": ").append(what);
    // Device names and error texts may contain terminal escapes.
    std::ranges::replace_if(
        line, [](char c) { return static_cast<unsigned char>(c) < ' ' || c == '\x7f'; }, ' ');
    onLine_(line);
}

void SelfCheck::checkPermissions() {
    const auto camera = camera_.permission();
    say("Camera permission", camera == CameraManager::Permission::granted, permissionName(camera));
    const bool isTrusted = services_.keyEvents.isTrusted();
    say(services_.words.typing.rightAtStart, isTrusted, isTrusted ? "granted." : "not granted.");
    const bool mayWatch = services_.spaceKeys.hasListenAccess();
    say("Watching keys", mayWatch,
        mayWatch ? "granted." : "not granted, so Space starts nothing; any activity does.",
        Need::optional);
}

void SelfCheck::checkSession() {
    const auto facts = services_.sessionInWords();
    if (!facts) {
        say("Session", false, "there is no session to ask about.");
        return;
    }
    say("Session", services_.lockState.state().isOnConsole.value_or(false),
        facts->empty() ? "it says nothing of itself." : *facts + ".");
}

void SelfCheck::checkModels() {
    if (!services_.pack) {
        say("Models", false, sentence(services_.pack.error()));
        return;
    }
    const ModelPack& pack = *services_.pack;
    const Date began = services_.clock.now();
    const auto embedder = SFaceEmbedder::load(
        pack.folder, {.fileName = pack.embedderFile, .modelIdentifier = pack.embedderIdentifier},
        services_.models, services_.imaging);
    if (!embedder) {
        say("Models", false, sentence(description(embedder.error())));
        return;
    }
    const auto realFace =
        MiniFASNet::load(pack.folder, services_.models, NeuralModels::ComputeUnits::all,
                         pack.realFaceFile, pack.realFaceIdentifier);
    if (!realFace) {
        say("Models", false, sentence(description(realFace.error())));
        return;
    }
    say("Models", true, pack.name + ", loaded in " + seconds(services_.clock.now() - began) + ".");
}

void SelfCheck::checkKeyStore() {
    VaultKeyStore& store = services_.trialKeyStore;
    std::array<std::uint8_t, 32> key{};
    if (!services_.cipher.random(key)) {
        say("Key store", false, "the system has no random numbers.");
        return;
    }
    const auto saved = store.saveKey(key);
    auto loaded = store.loadKey();
    const auto kept = loaded ? std::move(*loaded) : std::optional<SecretBytes>();
    const bool isSame = kept && std::ranges::equal(kept->values(), key);
    const auto deleted = store.deleteKey();
    if (!saved) {
        say("Key store", false, sentence(description(saved.error(), services_.words)));
    } else if (!loaded) {
        say("Key store", false, sentence(description(loaded.error(), services_.words)));
    } else if (!deleted) {
        say("Key store", false, sentence(description(deleted.error(), services_.words)));
    } else {
        say("Key store", isSame,
            isSame ? "a key was kept, read and removed." : "it gave another key back.");
    }
}

void SelfCheck::checkOwner() {
    const auto possible = services_.ownerCheck.canConfirm();
    say("Owner’s check", possible.has_value(),
        possible ? "available." : sentence(possible.error()));
}

void SelfCheck::checkTyping() {
    if (!services_.keyEvents.canType()) {
        say("Typing", false, "the system takes no keys from this program.");
        return;
    }
    const bool hasSource = services_.keyEvents.makeSource({}, {}) != nullptr;
    say("Typing", hasSource, hasSource ? "allowed." : "allowed, but no keyboard could be made.");
}

void SelfCheck::checkWindowSpace() {
    const bool isFound = services_.windowServer.hasLockScreenSpaces();
    say("Space above the lock screen", isFound,
        isFound ? "found." : "not found, so the island lies where this system lets it.",
        Need::optional);
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
    say("Camera", false, sentence(description(started.error(), services_.words)));
    onEnd_(isAllThere_);
}

void SelfCheck::cameraEnds(const std::optional<Size>& picture) {
    if (!timeout_) return;
    // Kept alive: the timer may be the caller.
    const auto timeout = std::exchange(timeout_, nullptr);
    const TimeInterval took = services_.clock.now() - cameraBegan_;
    camera_.stop();
    say("Camera", picture.has_value(),
        cameraInWords(camera_.opened()) +
            (picture ? "; first picture of " + pixels(*picture) + " after " + seconds(took) + "."
                     : "; no picture came within " + seconds(longestWait) + "."));
    const auto onEnd = onEnd_;
    onEnd(isAllThere_);
}

}  // namespace marrowby
