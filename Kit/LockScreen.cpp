// SPDX-License-Identifier: Apache-2.0
#include "Kit/LockScreen.h"

namespace marrowby {

LockScreenSpace* LockScreen::spaceIfLocked() {
    if (!lockState_.state().isScreenLocked.value_or(false)) return nullptr;
    if (!space_) space_ = server_.makeLockScreenSpace();
    return space_.get();
}

}  // namespace marrowby
