// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Foundation/Phrase.h"
#include "UnlockCore/Foundation/Time.h"
#include "UnlockCore/LockWatching/UnlockTrigger.h"

#include <optional>
#include <string_view>

namespace marrowby {

/// The state of one lock, so that neither the key press that locked the screen nor input right
/// after a scan starts the camera again.
struct UnlockTriggerPolicy {
    UnlockTriggers triggers;
    /// A wake within this time of the last accepted one is ignored.
    TimeInterval rearmDebounce{2.0};
    /// A wake sooner than this after the lock is ignored unless the computer slept in between;
    /// activity sooner than this after the fence is refused.
    TimeInterval lockQuietWindow{2.0};
    /// Activity counts only after at least this long without input.
    TimeInterval quietMinimum{1.0};
    /// When the screen locked or, failing that, the first accepted wake.
    std::optional<Date> lockedAt{};
    /// The lock, the last accepted wake or the end of the last scan, whichever was latest.
    std::optional<Date> fence{};
    /// Went to sleep, or was asleep already.
    bool sleptSinceLock = false;
    std::optional<Date> lastWakeAt{};

    /// Why this activity may not start a scan; nothing when it may.
    [[nodiscard]] std::optional<Phrase> activityRefusal(Date at, TimeInterval quietFor) const;

    void foundUnlocked();
    void screenLocked(Date now, bool isSleeping);
    void willSleep() { sleptSinceLock = true; }
    /// False when the wake is to be ignored.
    [[nodiscard]] bool acceptWake(Date now);
    void scanEnded(Date now);

  private:
    void pushFence(Date now);
};

}  // namespace marrowby
