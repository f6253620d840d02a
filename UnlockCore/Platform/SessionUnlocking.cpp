// SPDX-License-Identifier: Apache-2.0
#include "UnlockCore/Platform/SessionUnlocking.h"

#include "UnlockCore/Foundation/Text.h"

#include <ranges>

namespace marrowby {

LockOpening lockOpening(bool canAskDesktop, bool isAskingForbidden, bool canType) {
    if (canAskDesktop) return isAskingForbidden ? LockOpening::forbidden : LockOpening::asking;
    return canType ? LockOpening::typing : LockOpening::unsupported;
}

bool isAskingForbiddenBy(std::string_view policy) {
    for (const auto piece : policy | std::views::split('\n')) {
        const std::string line = trimmed(std::string(piece.begin(), piece.end()));
        const auto equals = line.find('=');
        if (trimmed(line.substr(0, equals)) != "ask-desktop-to-unlock") continue;
        if (equals == std::string::npos || trimmed(line.substr(equals + 1)) != "yes") return true;
    }
    return false;
}

}  // namespace marrowby
