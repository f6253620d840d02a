// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Engine/AutoLockInterval.h"
#include "UnlockCore/Engine/CameraChoice.h"
#include "UnlockCore/Engine/PasswordHealth.h"
#include "UnlockCore/Liveness/LivenessMode.h"
#include "UnlockCore/LockWatching/UnlockTrigger.h"
#include "UnlockCore/Platform/DefaultsStore.h"
#include "UnlockCore/Recognition/MatchStrictness.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace marrowby {

/// What the user set, and the health of the stored password. The initialisers are the defaults.
struct UnlockSettings {
    bool isEnabled = false;
    UnlockTriggers triggers{UnlockTrigger::onReturn};
    bool showsAnimation = true;
    MatchStrictness strictness = MatchStrictness::standard;
    LivenessMode livenessMode = LivenessMode::standard;
    /// One of scanSecondsChoices.
    std::int64_t scanSeconds = 5;
    AutoLockInterval autoLock = AutoLockInterval::week;
    /// The cameras' unique IDs, by kind of display.
    std::optional<std::string> builtInDisplayCameraID;
    std::optional<std::string> externalDisplayCameraID;
    bool hasFinishedWelcome = false;
    /// The user allowed having the desktop open the lock, without a password.
    bool asksDesktop = false;
    /// A screen locker has locked the screen before.
    bool hasSeenLocker = false;
    PasswordHealth passwordHealth;
    /// Unknown screen lockers, by the paths of their executables: those that the user vouched for,
    /// those that the user declined, and the one to ask about.
    std::vector<std::string> vouchedLockers{};
    std::vector<std::string> declinedLockers{};
    std::optional<std::string> offeredLocker{};
    /// As UnlockStatusFacts::untypedLocker.
    std::optional<std::string> untypedLocker{};

    [[nodiscard]] CameraChoice cameraChoice() const {
        return {builtInDisplayCameraID, externalDisplayCameraID};
    }

    /// An unknown locker was met. False where the user has answered about it before.
    bool offerLocker(const std::string& path);
    /// The user's answer about the offered locker.
    void answerOffer(bool vouches);

    static constexpr std::array<std::int64_t, 4> scanSecondsChoices{3, 5, 8, 10};

    /// What is missing or unreadable takes its default.
    [[nodiscard]] static UnlockSettings load(const DefaultsStore& store);
    void save(DefaultsStore& store) const;

    /// Rewrites a stored liveness mode that is not in its canonical form; true when it did.
    static bool normaliseLivenessMode(DefaultsStore& store);

    friend bool operator==(const UnlockSettings&, const UnlockSettings&) = default;
};

}  // namespace marrowby
