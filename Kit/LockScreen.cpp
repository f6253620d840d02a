#include "Kit/LockScreen.h"

#include <array>
#include <utility>

namespace marrowby {

LockScreenSpace::LockScreenSpace(std::shared_ptr<SkyLightFunctions> functions)
    : functions_(std::move(functions)),
      connection_(functions_->mainConnectionID()),
      space_(functions_->spaceCreate(connection_, 1, 0)) {
    functions_->spaceSetAbsoluteLevel(connection_, space_, absoluteLevel);
    functions_->showSpaces(connection_, std::array{space_});
}

void LockScreenSpace::add(const LockScreenPanel& window) {
    functions_->spaceAddWindowsAndRemoveFromSpaces(connection_, space_,
                                                   std::array{window.windowNumber()}, moveOptions);
}

void LockScreenSpace::remove(const LockScreenPanel& window) {
    functions_->removeWindowsFromSpaces(connection_, std::array{window.windowNumber()},
                                        std::array{space_});
}

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
