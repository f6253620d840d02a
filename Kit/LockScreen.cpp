#include "Kit/LockScreen.h"

#include <variant>

namespace marrowby {

std::int64_t LockScreen::windowLevel() {
    if (!windowLevel_) windowLevel_ = server_.shieldingWindowLevel() + 1;
    return *windowLevel_;
}

bool LockScreen::isSpaceAvailable() {
    return functions() != nullptr;
}

LockScreenSpace* LockScreen::spaceIfLocked() {
    if (!isLocked() || !functions()) return nullptr;
    if (!space_) space_.emplace(functions());
    return &*space_;
}

bool LockScreen::isLocked() const {
    const auto dictionary = session_.copyCurrentDictionary();
    if (!dictionary) return false;
    const auto entry = dictionary->find(sessionkey::screenIsLocked);
    if (entry == dictionary->end()) return false;
    const bool* value = std::get_if<bool>(&entry->second);
    return value && *value;
}

const std::shared_ptr<SkyLightFunctions>& LockScreen::functions() {
    if (!functions_) functions_ = server_.loadSkyLight();
    return *functions_;
}

}  // namespace marrowby
