// SPDX-License-Identifier: Apache-2.0
#include "Platforms/macOS/Rules/UnlockLockState.h"

#include "UnlockCore/Foundation/Phrase.h"

#include <cstdint>
#include <variant>

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

struct FactInWords {
    std::string operator()(bool value) const {
        return value ? translated("true") : translated("false");
    }
    std::string operator()(std::int64_t) const { return translated("a whole number"); }
    std::string operator()(double) const { return translated("a number"); }
    std::string operator()(const std::string&) const { return translated("a text"); }
};

}  // namespace

LockState UnlockLockState::of(const std::optional<SessionDictionary>& session) {
    return {.isScreenLocked = boolean(session, sessionkey::screenIsLocked),
            .isOnConsole = boolean(session, sessionkey::onConsole)};
}

std::optional<std::string> UnlockLockState::inWords(
    const std::optional<SessionDictionary>& session) {
    if (!session) return std::nullopt;
    std::string facts;
    for (const auto& [key, value] : *session)
        facts += (facts.empty() ? "" : ", ") +
                 translated("{key} is {value}",
                            {{"key", key}, {"value", std::visit(FactInWords(), value)}});
    return facts;
}

}  // namespace marrowby
