// SPDX-License-Identifier: Apache-2.0
#include "Unlock/Model/OwnerReminder.h"

#include "UnlockCore/Status/UnlockStatus.h"

#include <string>
#include <utility>

namespace marrowby {

OwnerReminder::OwnerReminder(DesktopNotices& notices, const PlatformWords& words,
                             std::function<void()> onConfirm)
    : notices_(notices), words_(words), onConfirm_(std::move(onConfirm)) {
    notices_.onPressed = [this] { press(); };
}

OwnerReminder::~OwnerReminder() {
    leave(Phase::over);
    notices_.onPressed = {};
}

void OwnerReminder::update(const Facts& facts) {
    if (phase_ == Phase::over) return;
    if (facts.isCheckPassed) return leave(Phase::over);
    if (facts.isScreenLocked || !facts.isCheckMissing) return leave(Phase::waiting);
    if (phase_ != Phase::waiting) return;
    phase_ = Phase::asking;
    const UnlockStatus missing = UnlockStatus::NeedsTouchID{};
    notices_.show({.title = missing.title(words_),
                   .text = missing.detail(words_),
                   .button = translated(words_.ownerCheck.button)});
}

void OwnerReminder::press() {
    if (phase_ != Phase::asking) return;
    leave(Phase::answered);
    onConfirm_();
}

void OwnerReminder::leave(Phase next) {
    if (std::exchange(phase_, next) == Phase::asking) notices_.withdraw();
}

}  // namespace marrowby
