// SPDX-License-Identifier: Apache-2.0
#include "UnlockCore/LockWatching/UnlockTriggerPolicy.h"

#include <algorithm>

namespace marrowby {

std::optional<Phrase> UnlockTriggerPolicy::activityRefusal(Date at, TimeInterval quietFor) const {
    if (!triggers.contains(UnlockTrigger::onReturn)) return Phrase("coming back isn’t chosen");
    if (!fence) return Phrase("not locked");
    if (at - *fence < lockQuietWindow) return Phrase("too soon after the lock or the last look");
    if (quietFor < quietMinimum) return Phrase("no quiet moment before it");
    return std::nullopt;
}

void UnlockTriggerPolicy::foundUnlocked() {
    lockedAt.reset();
    fence.reset();
    lastWakeAt.reset();
    sleptSinceLock = false;
}

void UnlockTriggerPolicy::screenLocked(Date now, bool isSleeping) {
    lockedAt = now;
    fence = now;
    sleptSinceLock = isSleeping;
}

bool UnlockTriggerPolicy::acceptWake(Date now) {
    if (lastWakeAt && now - *lastWakeAt < rearmDebounce) return false;
    if (lockedAt && !sleptSinceLock && now - *lockedAt < lockQuietWindow) return false;
    lastWakeAt = now;
    pushFence(now);
    if (!lockedAt) lockedAt = now;
    return true;
}

void UnlockTriggerPolicy::scanEnded(Date now) {
    if (lockedAt) pushFence(now);
}

void UnlockTriggerPolicy::pushFence(Date now) {
    fence = fence ? std::max(*fence, now) : now;
}

}  // namespace marrowby
