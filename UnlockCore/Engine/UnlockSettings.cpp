// SPDX-License-Identifier: Apache-2.0
#include "UnlockCore/Engine/UnlockSettings.h"

#include <algorithm>
#include <utility>
#include <variant>
#include <vector>

namespace marrowby {

namespace {

namespace key {
constexpr const char* enabled = "unlock.enabled";
constexpr const char* triggers = "unlock.triggers";
constexpr const char* showsAnimation = "unlock.showsAnimation";
constexpr const char* strictness = "unlock.strictness";
constexpr const char* livenessMode = "unlock.livenessMode";
constexpr const char* scanSeconds = "unlock.scanSeconds";
constexpr const char* autoLock = "unlock.autoLock";
constexpr const char* builtInDisplayCamera = "unlock.camera.builtInDisplay";
constexpr const char* externalDisplayCamera = "unlock.camera.externalDisplay";
constexpr const char* welcomeFinished = "unlock.welcomeFinished";
constexpr const char* passwordFailures = "unlock.password.failures";
constexpr const char* passwordSuspended = "unlock.password.suspended";
constexpr const char* passwordNeedsNotice = "unlock.password.needsNotice";
constexpr const char* asksDesktop = "unlock.asksDesktop";
constexpr const char* vouchedLockers = "unlock.lockers.vouched";
constexpr const char* declinedLockers = "unlock.lockers.declined";
constexpr const char* offeredLocker = "unlock.lockers.offered";
constexpr const char* hasSeenLocker = "unlock.lockers.seen";
constexpr const char* untypedLocker = "unlock.lockers.untyped";
}  // namespace key

template <typename T>
std::optional<T> stored(const DefaultsStore& store, const char* key) {
    auto value = store.value(key);
    if (!value) return std::nullopt;
    T* const typed = std::get_if<T>(&*value);
    return typed ? std::optional(std::move(*typed)) : std::nullopt;
}

bool storedBool(const DefaultsStore& store, const char* key) {
    return stored<bool>(store, key).value_or(false);
}

std::int64_t storedInteger(const DefaultsStore& store, const char* key) {
    return stored<std::int64_t>(store, key).value_or(0);
}

UnlockTriggers storedTriggers(const DefaultsStore& store) {
    const auto texts = stored<std::vector<std::string>>(store, key::triggers);
    if (!texts) return UnlockSettings().triggers;
    UnlockTriggers triggers;
    for (const std::string& text : *texts) {
        if (const auto trigger = unlockTrigger(text)) triggers.insert(*trigger);
    }
    return triggers;
}

std::vector<std::string> storedTexts(const DefaultsStore& store, const char* key) {
    return stored<std::vector<std::string>>(store, key).value_or(std::vector<std::string>());
}

void setOrRemove(DefaultsStore& store, const char* key, const std::vector<std::string>& texts) {
    if (texts.empty()) {
        store.remove(key);
    } else {
        store.set(key, texts);
    }
}

void setOrRemove(DefaultsStore& store, const char* key, const std::optional<std::string>& text) {
    if (text) {
        store.set(key, *text);
    } else {
        store.remove(key);
    }
}

}  // namespace

UnlockSettings UnlockSettings::load(const DefaultsStore& store) {
    UnlockSettings settings;
    settings.isEnabled = storedBool(store, key::enabled);
    settings.triggers = storedTriggers(store);
    settings.showsAnimation =
        !store.value(key::showsAnimation) || storedBool(store, key::showsAnimation);
    settings.strictness =
        matchStrictness(stored<std::string>(store, key::strictness).value_or(std::string()))
            .value_or(settings.strictness);
    settings.livenessMode = marrowby::livenessMode(stored<std::string>(store, key::livenessMode));
    const std::int64_t seconds = storedInteger(store, key::scanSeconds);
    if (std::ranges::find(scanSecondsChoices, seconds) != scanSecondsChoices.end()) {
        settings.scanSeconds = seconds;
    }
    settings.autoLock =
        autoLockInterval(stored<std::string>(store, key::autoLock).value_or(std::string()))
            .value_or(settings.autoLock);
    settings.builtInDisplayCameraID = stored<std::string>(store, key::builtInDisplayCamera);
    settings.externalDisplayCameraID = stored<std::string>(store, key::externalDisplayCamera);
    settings.hasFinishedWelcome = storedBool(store, key::welcomeFinished);
    settings.passwordHealth = {
        .failures = std::max<std::int64_t>(0, storedInteger(store, key::passwordFailures)),
        .suspended = storedBool(store, key::passwordSuspended),
        .needsNotice = storedBool(store, key::passwordNeedsNotice)};
    settings.asksDesktop = storedBool(store, key::asksDesktop);
    settings.vouchedLockers = storedTexts(store, key::vouchedLockers);
    settings.declinedLockers = storedTexts(store, key::declinedLockers);
    settings.offeredLocker = stored<std::string>(store, key::offeredLocker);
    settings.hasSeenLocker = storedBool(store, key::hasSeenLocker);
    settings.untypedLocker = stored<std::string>(store, key::untypedLocker);
    return settings;
}

void UnlockSettings::save(DefaultsStore& store) const {
    std::vector<std::string> triggerTexts;
    for (const UnlockTrigger trigger : allUnlockTriggers) {
        if (triggers.contains(trigger)) triggerTexts.emplace_back(rawValue(trigger));
    }
    store.set(key::enabled, isEnabled);
    store.set(key::triggers, std::move(triggerTexts));
    store.set(key::showsAnimation, showsAnimation);
    store.set(key::strictness, std::string(rawValue(strictness)));
    store.set(key::livenessMode, std::string(rawValue(livenessMode)));
    store.set(key::scanSeconds, scanSeconds);
    store.set(key::autoLock, std::string(rawValue(autoLock)));
    setOrRemove(store, key::builtInDisplayCamera, builtInDisplayCameraID);
    setOrRemove(store, key::externalDisplayCamera, externalDisplayCameraID);
    store.set(key::welcomeFinished, hasFinishedWelcome);
    store.set(key::passwordFailures, passwordHealth.failures);
    store.set(key::passwordSuspended, passwordHealth.suspended);
    store.set(key::passwordNeedsNotice, passwordHealth.needsNotice);
    // Where no desktop can be asked there is no such key.
    if (asksDesktop) {
        store.set(key::asksDesktop, true);
    } else {
        store.remove(key::asksDesktop);
    }
    setOrRemove(store, key::vouchedLockers, vouchedLockers);
    setOrRemove(store, key::declinedLockers, declinedLockers);
    setOrRemove(store, key::offeredLocker, offeredLocker);
    store.set(key::hasSeenLocker, hasSeenLocker);
    setOrRemove(store, key::untypedLocker, untypedLocker);
}

bool UnlockSettings::offerLocker(const std::string& path) {
    const auto isIn = [&](const std::vector<std::string>& paths) {
        return std::ranges::find(paths, path) != paths.end();
    };
    if (isIn(vouchedLockers) || isIn(declinedLockers) || offeredLocker == path) return false;
    offeredLocker = path;
    return true;
}

void UnlockSettings::answerOffer(bool vouches) {
    if (!offeredLocker) return;
    (vouches ? vouchedLockers : declinedLockers).push_back(*std::move(offeredLocker));
    offeredLocker.reset();
}

bool UnlockSettings::normaliseLivenessMode(DefaultsStore& store) {
    if (!store.value(key::livenessMode)) return false;
    const auto text = stored<std::string>(store, key::livenessMode);
    const auto canonical = rawValue(marrowby::livenessMode(text));
    if (text == canonical) return false;
    store.set(key::livenessMode, std::string(canonical));
    return true;
}

}  // namespace marrowby
