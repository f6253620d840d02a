#include "UnlockCore/LockWatching/UnlockLockState.h"

#include <string>

namespace marrowby {
namespace {

std::optional<bool> boolean(const std::optional<SessionDictionary>& session,
                            const std::string& key) {
    if (!session) return std::nullopt;
    const auto entry = session->find(key);
    if (entry == session->end()) return std::nullopt;
    const bool* value = std::get_if<bool>(&entry->second);
    return value ? std::optional(*value) : std::nullopt;
}

}  // namespace

bool UnlockLockState::isLocked(const std::optional<SessionDictionary>& session) {
    return boolean(session, sessionkey::screenIsLocked).value_or(false) &&
           isOnConsole(session).value_or(true);
}

std::optional<bool> UnlockLockState::isOnConsole(const std::optional<SessionDictionary>& session) {
    return boolean(session, sessionkey::onConsole);
}

}  // namespace marrowby
