#include "Kit/LockScreen.h"

namespace marrowby {

std::int64_t LockScreen::windowLevel() {
    if (!windowLevel_) windowLevel_ = server_.shieldingWindowLevel() + 1;
    return *windowLevel_;
}

bool LockScreen::isSpaceAvailable() {
    return functions() != nullptr;
}

LockScreenSpace* LockScreen::spaceIfLocked() {
    if (!lockState_.state().isScreenLocked.value_or(false) || !functions()) return nullptr;
    if (!space_) space_.emplace(functions());
    return &*space_;
}

const std::shared_ptr<SkyLightFunctions>& LockScreen::functions() {
    if (!functions_) functions_ = server_.loadSkyLight();
    return *functions_;
}

}  // namespace marrowby
