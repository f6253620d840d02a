// SPDX-License-Identifier: Apache-2.0
#include "Unlock/Model/UnlockNotice.h"

#include "UnlockCore/Foundation/Phrase.h"

namespace marrowby {

UnlockNotice::UnlockNotice(DesktopNotices& notices, SessionUnlocking& session)
    : notices_(notices), session_(session) {
    notices_.onPressed = [this] { press(); };
}

UnlockNotice::~UnlockNotice() {
    update(true);
    notices_.onPressed = {};
}

void UnlockNotice::note(const LogLine& line) {
    if (line.event == logevent::recognised && session_.opening() == LockOpening::asking) {
        state_ = Seen{.name = line.name};
    } else if (line.event == logevent::unlocked) {
        if (auto* seen = std::get_if<Seen>(&state_)) seen->hasUnlocked = true;
    } else if (line.event == logevent::locked) {
        update(true);
        state_ = Waiting{};
    }
}

void UnlockNotice::update(bool isScreenLocked) {
    if (isScreenLocked) {
        if (!std::holds_alternative<Shown>(state_)) return;
        state_ = Waiting{};
        notices_.withdraw();
    } else if (const auto* seen = std::get_if<Seen>(&state_);
               seen != nullptr && seen->hasUnlocked) {
        notices_.show({.title = translated("Unlocked for {name}", {{"name", seen->name}}),
                       .text = translated("If that was a mistake, lock the screen again."),
                       .button = translated("Lock Again"),
                       .isBrief = true});
        state_ = Shown{};
    }
}

void UnlockNotice::press() {
    if (!std::holds_alternative<Shown>(state_)) return;
    update(true);
    session_.lockAgain();
}

}  // namespace marrowby
