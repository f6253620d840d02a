#include "Platforms/Linux/LinuxLoginSession.h"

#include <variant>

namespace marrowby {
namespace {

std::optional<bool> boolean(const std::optional<SessionDictionary>& dictionary, const char* key) {
    if (!dictionary) return std::nullopt;
    const auto entry = dictionary->find(key);
    if (entry == dictionary->end()) return std::nullopt;
    const bool* value = std::get_if<bool>(&entry->second);
    return value ? std::optional(*value) : std::nullopt;
}

LockReading lockReading(std::optional<bool> isLocked) {
    if (!isLocked) return LockReading::unknown;
    return *isLocked ? LockReading::locked : LockReading::unlocked;
}

}  // namespace

SessionTruth LinuxLoginSession::truth() const {
    const LogindWatcher::State logind = logind_.state();
    const auto display = display_ ? display_->copyCurrentDictionary() : std::nullopt;
    return SessionTruth::of({
        .display = lockReading(boolean(display, sessionkey::screenIsLocked)),
        .hint = logind.hint,
        .hintIsKept = logind.hintIsKept,
        .saver = savers_.reading(),
        .isActive = logind.isActive,
        .isDisplayOnConsole = boolean(display, sessionkey::onConsole),
        .isPreparingForSleep = logind.isPreparingForSleep,
    });
}

std::optional<SessionDictionary> LinuxLoginSession::copyCurrentDictionary() const {
    const SessionTruth truth = this->truth();
    SessionDictionary dictionary;
    if (truth.lock != LockReading::unknown)
        dictionary[sessionkey::screenIsLocked] = truth.lock == LockReading::locked;
    if (truth.isOnConsole) dictionary[sessionkey::onConsole] = *truth.isOnConsole;
    if (dictionary.empty()) return std::nullopt;
    return dictionary;
}

}  // namespace marrowby
