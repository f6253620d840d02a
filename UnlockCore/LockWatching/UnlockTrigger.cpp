// SPDX-License-Identifier: Apache-2.0
#include "UnlockCore/LockWatching/UnlockTrigger.h"

namespace marrowby {

std::string_view rawValue(UnlockTrigger trigger) {
    switch (trigger) {
        case UnlockTrigger::onReturn:
            return "onReturn";
        case UnlockTrigger::onSpace:
            return "onSpace";
    }
    return {};
}

Phrase title(UnlockTrigger trigger) {
    switch (trigger) {
        case UnlockTrigger::onReturn:
            return Phrase("When you come back");
        case UnlockTrigger::onSpace:
            return Phrase("When you press Space");
    }
    return {};
}

std::optional<UnlockTrigger> unlockTrigger(std::string_view stored) {
    for (const UnlockTrigger trigger : allUnlockTriggers) {
        if (rawValue(trigger) == stored) return trigger;
    }
    if (stored == "onWake" || stored == "onLock") return UnlockTrigger::onReturn;
    return std::nullopt;
}

}  // namespace marrowby
