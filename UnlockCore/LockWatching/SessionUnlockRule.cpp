// SPDX-License-Identifier: Apache-2.0
#include "UnlockCore/LockWatching/SessionUnlockRule.h"

namespace marrowby {

std::optional<SessionUnlockRule::Refusal> SessionUnlockRule::refusal(
    const SessionUnlockFacts& facts) {
    using Shell = SessionUnlockFacts::Shell;
    if (facts.isForbidden) return Refusal::forbidden;
    if (!facts.isLocked) return Refusal::noSession;
    if (!*facts.isLocked) return Refusal::notLocked;
    if (!facts.isOwn) return Refusal::foreignSession;
    if (!facts.isActive) return Refusal::notActive;
    if (!facts.hasSeat) return Refusal::noSeat;
    if (facts.isGoingToSleep.value_or(true)) return Refusal::sleeping;
    if (facts.shell == Shell::none) return Refusal::noShell;
    if (facts.shell == Shell::foreign) return Refusal::foreignShell;
    if (!facts.lockedFor) return Refusal::lockNotSeen;
    // Written so that a time which is no number refuses.
    if (!(*facts.lockedFor >= steadyTime)) return Refusal::hintUnsteady;
    return std::nullopt;
}

Phrase description(SessionUnlockRule::Refusal refusal) {
    using enum SessionUnlockRule::Refusal;
    switch (refusal) {
        case forbidden:
            return Phrase("The administrator forbids asking the desktop.");
        case noSession:
            return Phrase("The system doesn’t answer about this session.");
        case notLocked:
            return Phrase("The session isn’t locked.");
        case foreignSession:
            return Phrase("The session is another user’s.");
        case notActive:
            return Phrase("The session isn’t in front.");
        case noSeat:
            return Phrase("The session has no screen of this computer.");
        case sleeping:
            return Phrase("The computer is going to sleep.");
        case noShell:
            return Phrase("The desktop doesn’t answer.");
        case foreignShell:
            return Phrase("The desktop’s name belongs to another user.");
        case lockNotSeen:
            return Phrase("The screen was locked before Marrowby Unlock saw it.");
        case hintUnsteady:
            return Phrase("The session has only just said that it is locked.");
    }
    return {};
}

}  // namespace marrowby
